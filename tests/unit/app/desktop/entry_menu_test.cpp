// SPDX-License-Identifier: MIT
#include "app/entry_menu.h"

#include "unit/app/print_text.h"

#include <QApplication>

#include <gmock/gmock.h>

namespace orvanta {
namespace {

using Id = MenuEntryId;
using testing::ElementsAre;
using testing::IsEmpty;

struct EntryMenuTest : testing::Test {
    MenuSnapshot snapshot;
    std::vector<int> chosen;
    std::function<void()> onChoice;
    EntryMenu menu{{
                       .text = [](const MenuEntry& entry) { return entry.text + u'!'; },
                       .makeTextLine = [](QMenu& owner) { return new QAction(&owner); },
                   },
                   [this](Id id) {
                       chosen.push_back(static_cast<int>(id));
                       if (onChoice) {
                           onChoice();
                       }
                   }};

    void show() { menu.show(menuEntries(snapshot)); }
    QAction* action(Id id) { return menu.menu().actions().at(static_cast<int>(id) - 1); }

    /// How often actions announce a change while `change` runs.
    int announcements(const std::function<void()>& change) {
        int count = 0;
        QObject context;
        for (QAction* each : menu.menu().actions()) {
            QObject::connect(each, &QAction::changed, &context, [&count] { ++count; });
        }
        change();
        return count;
    }
};

TEST_F(EntryMenuTest, HasSixteenActionsWithTheTextsOfTheirEntries) {
    snapshot.statusText = QStringLiteral("Offline");
    show();
    ASSERT_EQ(menu.menu().actions().size(), 16);
    EXPECT_EQ(action(Id::status)->text(), QStringLiteral("Status: Offline!"));
    EXPECT_EQ(action(Id::quit)->text(), QStringLiteral("Quit!"));
    for (const Id separator : {Id::statusSeparator, Id::commandSeparator, Id::runtimeSeparator}) {
        EXPECT_TRUE(action(separator)->isSeparator());
    }
}

TEST_F(EntryMenuTest, ShowsWhatIsVisibleEnabledAndChecked) {
    snapshot.workspaceId = QStringLiteral("w");
    snapshot.launchAtLoginEnabled = true;
    show();
    EXPECT_TRUE(action(Id::workspace)->isVisible());
    EXPECT_FALSE(action(Id::lastError)->isVisible());
    EXPECT_FALSE(action(Id::status)->isEnabled());
    EXPECT_TRUE(action(Id::signIn)->isEnabled());
    EXPECT_FALSE(action(Id::signOut)->isEnabled());
    EXPECT_TRUE(action(Id::launchAtLogin)->isCheckable());
    EXPECT_TRUE(action(Id::launchAtLogin)->isChecked());
}

TEST_F(EntryMenuTest, KeepsItsActionsAndAnnouncesOnlyWhatDiffers) {
    show();
    const QList<QAction*> before = menu.menu().actions();
    EXPECT_EQ(announcements([this] { show(); }), 0);
    snapshot.statusText = QStringLiteral("Online");
    EXPECT_EQ(announcements([this] { show(); }), 1);
    EXPECT_EQ(menu.menu().actions(), before);
    EXPECT_EQ(action(Id::status)->text(), QStringLiteral("Status: Online!"));
}

TEST_F(EntryMenuTest, HeadlinesAreBoldAndFootnotesSmaller) {
    show();
    EXPECT_TRUE(action(Id::status)->font().bold());
    EXPECT_LT(action(Id::runtimeStatus)->font().pointSizeF(),
              action(Id::status)->font().pointSizeF());
}

TEST_F(EntryMenuTest, AFontThatIsMeasuredInPixelsHasFootnotesToo) {
    const QFont before = QApplication::font("QMenu");
    QFont inPixels = before;
    inPixels.setPixelSize(20);
    QApplication::setFont(inPixels, "QMenu");
    show();
    QApplication::setFont(before, "QMenu");
    EXPECT_EQ(action(Id::runtimeStatus)->font().pixelSize(), 18);
    EXPECT_EQ(action(Id::status)->font().pixelSize(), 20);
}

TEST_F(EntryMenuTest, AChosenEntryIsToldOnce) {
    show();
    action(Id::restart)->trigger();
    action(Id::quit)->trigger();
    EXPECT_THAT(chosen, ElementsAre(8, 16));
}

TEST_F(EntryMenuTest, WhatIsDisabledCannotBeChosen) {
    show();
    action(Id::signOut)->trigger();
    action(Id::status)->trigger();
    EXPECT_THAT(chosen, IsEmpty());
}

TEST_F(EntryMenuTest, TheMarkOfAToggleFollowsTheEntryAndNotTheClick) {
    show();
    action(Id::launchAtLogin)->trigger();
    QCoreApplication::processEvents();
    EXPECT_THAT(chosen, ElementsAre(14));
    EXPECT_FALSE(action(Id::launchAtLogin)->isChecked());
    snapshot.launchAtLoginEnabled = true;
    show();
    EXPECT_TRUE(action(Id::launchAtLogin)->isChecked());
}

TEST_F(EntryMenuTest, AToggleThatTheChoiceSetsAnnouncesItsMarkOnce) {
    show();
    const int count = announcements([this] {
        onChoice = [this] {
            QMetaObject::invokeMethod(
                &menu.menu(),
                [this] {
                    snapshot.launchAtLoginEnabled = true;
                    show();
                },
                Qt::QueuedConnection);
        };
        action(Id::launchAtLogin)->trigger();
        QCoreApplication::processEvents();
    });
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(action(Id::launchAtLogin)->isChecked());
}

} // namespace
} // namespace orvanta
