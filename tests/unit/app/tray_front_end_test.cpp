// SPDX-License-Identifier: MIT
#include "app/tray_front_end.h"

#include "app/orvanta_menu_bar_view.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_main_queue.h"
#include "platform/tray_host.h"
#include "unit/app/print_text.h"
#include "unit/app/recording_menu_source.h"

#include <gmock/gmock.h>

namespace orvanta {
namespace {

using Event = TrayHost::Event;
using testing::ElementsAre;
using testing::IsEmpty;

class FakeTrayHost : public TrayHost {
public:
    void watch(std::function<void(Event)> observer) override { tell = std::move(observer); }
    QString hint() const override { return QStringLiteral("no panel"); }
    QString menuText(const QString& text) const override { return text; }
    bool opensMenuOnClick() const override { return true; }

    std::function<void(Event)> tell;
};

/// What the icons were told, in order: the state's raw value and, with the menu, the status line.
using Drawings = std::vector<std::string>;

class RecordingIcon : public TrayIcon {
public:
    RecordingIcon(Drawings& drawings, int& living) : m_drawings(drawings), m_living(living) {
        ++m_living;
    }
    ~RecordingIcon() override { --m_living; }

    void showState(ConnectorMenuState state) override {
        m_drawings.push_back(std::to_string(static_cast<int>(state)));
    }
    void show(ConnectorMenuState state, const std::vector<MenuEntry>& entries) override {
        m_drawings.push_back(std::to_string(static_cast<int>(state)) + " " +
                             entries.front().text.toStdString());
    }

private:
    Drawings& m_drawings;
    int& m_living;
};

struct TrayFrontEndTest : testing::Test {
    RecordingMenuSource manager;
    fakes::FakeMainQueue queue;
    fakes::FakeApplicationHost application;
    OrvantaMenuBarView view{manager.source(), queue, application};
    FakeTrayHost host;
    Drawings drawings;
    int livingIcons = 0;
    std::vector<std::string> complaints;
    std::unique_ptr<TrayFrontEnd> frontEnd = std::make_unique<TrayFrontEnd>(
        view, host, queue,
        [this] { return std::make_unique<RecordingIcon>(drawings, livingIcons); },
        [this](const QString& text) { complaints.push_back(text.toStdString()); });

    TrayFrontEndTest() { manager.snapshot.statusText = QStringLiteral("Offline"); }
};

TEST_F(TrayFrontEndTest, TouchesNoIconBeforeThereIsAHost) {
    manager.setStatusText(QStringLiteral("Starting..."));
    queue.advance(Seconds(60));
    EXPECT_EQ(livingIcons, 0);
}

TEST_F(TrayFrontEndTest, DrawsTheStateOfNowWhenAHostAppears) {
    manager.setStatusText(QStringLiteral("Starting..."));
    host.tell(Event::appeared);
    EXPECT_THAT(drawings, ElementsAre("0 Status: Starting..."));
}

TEST_F(TrayFrontEndTest, ABurstOfChangesIsDrawnOnceOnALaterTurn) {
    host.tell(Event::appeared);
    drawings.clear();
    manager.setStatusText(QStringLiteral("one"));
    manager.setStatusText(QStringLiteral("two"));
    manager.willChange.announce();
    manager.snapshot.menuState = ConnectorMenuState::online;
    EXPECT_THAT(drawings, IsEmpty());
    queue.runUntilIdle();
    EXPECT_THAT(drawings, ElementsAre("2 Status: two"));
}

TEST_F(TrayFrontEndTest, WhatHasSettledIsInTheIconAtOnceAndInTheMenuOnALaterTurn) {
    host.tell(Event::appeared);
    drawings.clear();
    manager.setStatusText(QStringLiteral("Online"));
    manager.snapshot.menuState = ConnectorMenuState::online;
    manager.willChange.settle();
    EXPECT_THAT(drawings, ElementsAre("2"));
    queue.runUntilIdle();
    EXPECT_THAT(drawings, ElementsAre("2", "2 Status: Online"));
}

TEST_F(TrayFrontEndTest, WhatSettlesWithoutAHostIsDrawnWhenOneAppears) {
    manager.setStatusText(QStringLiteral("Online"));
    manager.willChange.settle();
    EXPECT_THAT(drawings, IsEmpty());
    host.tell(Event::appeared);
    EXPECT_THAT(drawings, ElementsAre("0 Status: Online"));
}

TEST_F(TrayFrontEndTest, TheIconGoesWithItsDesktopAndComesBackWithIt) {
    host.tell(Event::appeared);
    host.tell(Event::lost);
    EXPECT_EQ(livingIcons, 0);
    manager.setStatusText(QStringLiteral("Online"));
    queue.runUntilIdle();
    drawings.clear();
    host.tell(Event::appeared);
    EXPECT_EQ(livingIcons, 1);
    EXPECT_THAT(drawings, ElementsAre("0 Status: Online"));
}

TEST_F(TrayFrontEndTest, WithoutAHostTheUserIsToldOnceAfterTenSeconds) {
    queue.advance(Seconds(9.9));
    EXPECT_THAT(complaints, IsEmpty());
    queue.advance(Seconds(0.2));
    EXPECT_THAT(complaints, ElementsAre("no panel"));
    queue.advance(Seconds(1000));
    EXPECT_THAT(complaints, ElementsAre("no panel"));
}

TEST_F(TrayFrontEndTest, AHostThatCameInTimeIsNothingToTellOfEvenIfItIsGoneAgain) {
    queue.advance(Seconds(5));
    host.tell(Event::appeared);
    host.tell(Event::lost);
    queue.advance(Seconds(60));
    EXPECT_THAT(complaints, IsEmpty());
}

TEST_F(TrayFrontEndTest, NothingHappensAfterItsEnd) {
    host.tell(Event::appeared);
    drawings.clear();
    frontEnd.reset();
    EXPECT_EQ(livingIcons, 0);
    host.tell(Event::appeared);
    manager.setStatusText(QStringLiteral("Starting..."));
    queue.advance(Seconds(60));
    EXPECT_EQ(livingIcons, 0);
    EXPECT_THAT(drawings, IsEmpty());
    EXPECT_THAT(complaints, IsEmpty());
}

} // namespace
} // namespace orvanta
