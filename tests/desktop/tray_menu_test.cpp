// SPDX-License-Identifier: MIT
#include "desktop/desktop_test.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

namespace orvanta::tests {

namespace {

using Entry = TrayMenu::Entry;

QStringList textsOf(const QList<Entry>& entries) {
    QStringList texts;
    for (const Entry& entry : entries) {
        texts.append(entry.isSeparator ? QStringLiteral("-") : entry.shownText());
    }
    return texts;
}

QStringList namesOf(const QList<Entry>& entries, bool (*is)(const Entry&)) {
    QStringList names;
    for (const Entry& entry : entries) {
        if (is(entry)) {
            names.append(entry.shownText());
        }
    }
    return names;
}

bool canBeChosen(const Entry& entry) {
    return !entry.isSeparator && entry.isVisible && entry.isEnabled;
}

} // namespace

class TrayMenuOnDesktop : public DesktopTest {
protected:
    /// The connector answers the status request with this document.
    void pretend(const QJsonObject& document) {
        ASSERT_TRUE(connector().post(QStringLiteral("/demo/status-document"),
                                     QJsonDocument(document).toJson()));
    }
    QStringList choosable() const { return namesOf(menu().entries(), canBeChosen); }
};

TEST_F(TrayMenuOnDesktop, SixteenEntriesInTheirOrder) {
    startAndSettle();
    const QList<Entry> entries = menu().entries();
    const QStringList expected{
        QStringLiteral("Status: Not Paired"),
        QString(),
        QString(),
        QStringLiteral("-"),
        QStringLiteral("Open Dashboard"),
        QStringLiteral("Sign In / Pair"),
        QStringLiteral("Sign Out"),
        QStringLiteral("Restart"),
        QStringLiteral("-"),
        QStringLiteral("Runtime: Runtime updater disabled in config.json."),
        QStringLiteral("Check for Runtime Updates"),
        QStringLiteral("Update Desktop Connector"),
        QStringLiteral("Rollback Runtime"),
        QStringLiteral("Launch at Login"),
        QStringLiteral("-"),
        QStringLiteral("Quit"),
    };
    EXPECT_EQ(textsOf(entries), expected);
    for (qsizetype index = 0; index < entries.size(); ++index) {
        EXPECT_EQ(entries[index].isVisible, index != 1 && index != 2) << index;
        EXPECT_EQ(entries[index].isToggle, index == 13) << index;
        EXPECT_FALSE(entries[index].isChecked) << index;
    }
    EXPECT_EQ(choosable(),
              (QStringList{QStringLiteral("Open Dashboard"), QStringLiteral("Sign In / Pair"),
                           QStringLiteral("Restart"), QStringLiteral("Check for Runtime Updates"),
                           QStringLiteral("Launch at Login"), QStringLiteral("Quit")}));
}

TEST_F(TrayMenuOnDesktop, PairingAndSigningOutAreNeverBothOffered) {
    startEverything();
    struct Case {
        const char* state;
        const char* line;
        bool canPair;
    };
    for (const Case& one :
         {Case{"NEEDS_PAIRING", "Status: Not Paired", true},
          Case{"RUNNING", "Status: Online", false}, Case{"STARTING", "Status: Offline", true}}) {
        pretend({{QStringLiteral("state"), QLatin1String(one.state)}});
        ASSERT_TRUE(waitForEntry(QLatin1String(one.line))) << scene();
        ASSERT_TRUE(waitFor([&] {
            return menu().entry(QStringLiteral("Sign In / Pair")).isEnabled == one.canPair &&
                   menu().entry(QStringLiteral("Sign Out")).isEnabled != one.canPair;
        })) << scene();
    }
}

TEST_F(TrayMenuOnDesktop, TheWorkspaceAndTheErrorAreThereOnlyWithSomethingToSay) {
    startEverything();
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/abort?what=pair")));
    pretend({{QStringLiteral("state"), QStringLiteral("NEEDS_LOGIN")},
             {QStringLiteral("workspaceId"), QStringLiteral("w42")}});
    ASSERT_TRUE(waitForEntry(QStringLiteral("w42"))) << scene();
    EXPECT_EQ(shownTexts().mid(0, 3), (QStringList{QStringLiteral("Status: Not Paired"),
                                                   QStringLiteral("w42"), QStringLiteral("-")}));
    ASSERT_TRUE(choose(QStringLiteral("Sign In / Pair")));
    // Cut into lines, so that the menu does not grow as wide as the sentence.
    ASSERT_TRUE(waitFor([this] { return shownTexts().value(2) != QLatin1String("-"); })) << scene();
    EXPECT_EQ(shownTexts().value(2).simplified(),
              QStringLiteral("Could not reach the Desktop Connector to start pairing."));
    EXPECT_FALSE(menu().entries().value(1).isEnabled);
    EXPECT_FALSE(menu().entries().value(2).isEnabled);

    pretend({{QStringLiteral("state"), QStringLiteral("NEEDS_LOGIN")},
             {QStringLiteral("workspaceId"), QString()}});
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/abort?what=pair&on=0")));
    ASSERT_TRUE(choose(QStringLiteral("Sign In / Pair")));
    ASSERT_TRUE(waitFor([this] { return shownTexts().value(1) == QLatin1String("-"); })) << scene();
    EXPECT_EQ(shownTexts().size(), 14);
}

TEST_F(TrayMenuOnDesktop, TextsAreShownAsTheyAre) {
    startEverything();
    for (const char* text : {"a_b", "_a__b___c_", "a & b && c", "&File", "<b>bold</b> &amp; <i>",
                             "a&_b_&c", "\"quoted\" 'too'", "100 %1 %n"}) {
        pretend({{QStringLiteral("state"), QStringLiteral("RUNNING")},
                 {QStringLiteral("workspaceId"), QLatin1String(text)}});
        ASSERT_TRUE(waitForEntry(QLatin1String(text)))
            << text << " is sent as " << menu().entries().value(1).label.toStdString();
    }
}

TEST_F(TrayMenuOnDesktop, ALongWorkspaceIsCutToOneLine) {
    startEverything();
    pretend({{QStringLiteral("state"), QStringLiteral("NEEDS_LOGIN")},
             {QStringLiteral("workspaceId"), QStringLiteral("workspace ").repeated(30)}});
    ASSERT_TRUE(waitFor([this] { return menu().entries().value(1).isVisible; })) << scene();
    const QString shown = menu().entries().value(1).shownText();
    EXPECT_FALSE(shown.contains(QLatin1Char('\n')));
    EXPECT_LT(shown.size(), 60);
    EXPECT_TRUE(shown.startsWith(QStringLiteral("workspace workspace"))) << shown.toStdString();
}

TEST_F(TrayMenuOnDesktop, ALongErrorIsShownInFullOverSeveralLines) {
    // Its text names this path.
    const QString directory = home.filePath(QStringLiteral("deep/").repeated(20));
    QDir().mkpath(directory);
    QFile obstacle(directory + QStringLiteral("autostart"));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), directory);
    startAndSettle();
    ASSERT_TRUE(choose(QStringLiteral("Launch at Login")));
    ASSERT_TRUE(waitFor([this] { return menu().entries().value(2).isVisible; })) << scene();
    const QString shown = menu().entries().value(2).shownText();
    EXPECT_TRUE(shown.startsWith(QStringLiteral("Launch at login failed: "))) << scene();
    EXPECT_GE(shown.count(QLatin1Char('\n')), 2) << scene();
    QString inOneLine = shown;
    inOneLine.remove(QLatin1Char('\n'));
    EXPECT_TRUE(inOneLine.contains(directory + QStringLiteral("autostart"))) << scene();
    for (const QString& line : shown.split(QLatin1Char('\n'))) {
        EXPECT_LT(line.size(), 60) << line.toStdString();
    }
}

} // namespace orvanta::tests
