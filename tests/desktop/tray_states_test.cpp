// SPDX-License-Identifier: MIT
#include "desktop/desktop_test.h"

namespace orvanta::tests {

namespace {

QImage premultiplied(const QImage& picture) {
    return picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

class TrayStates : public DesktopTest {
protected:
    /// Whether the panel was sent the picture of this name in every size that status icons have:
    /// the same pixels, but for what is lost where they are nearly transparent.
    ::testing::AssertionResult isPicture(const QString& name) const {
        const QMap<int, QImage> sent = item->pictures();
        for (const int size : {16, 22, 24, 32, 44, 48, 64}) {
            const QImage drawn(QStringLiteral(":/icons/%1/%2.png").arg(name).arg(size));
            if (drawn.isNull()) {
                return ::testing::AssertionFailure() << "there is no picture of width " << size;
            }
            if (premultiplied(sent.value(size)) != premultiplied(drawn)) {
                return ::testing::AssertionFailure() << "width " << size << " differs";
            }
        }
        return ::testing::AssertionSuccess();
    }

    void keepPanel(const QString& name) {
        ASSERT_TRUE(waitFor([this] { return !iconArea().isEmpty(); })) << scene();
        keepPicture(name, QRect(0, 0, 160, Panel::kHeight));
    }
};

TEST_F(TrayStates, BeforeAnyAnswerItIsOffline) {
    switches.insert(QStringLiteral("listenDelayMs"), 600'000);
    ASSERT_TRUE(panel->start()) << scene();
    startTrayAsIcon();
    ASSERT_TRUE(waitForItem()) << scene();
    EXPECT_EQ(item->toolTipTitle(), QStringLiteral("Orvanta Offline"));
    EXPECT_TRUE(isPicture(QStringLiteral("MenuBarOffline")));
    EXPECT_EQ(item->text(QStringLiteral("Category")), QStringLiteral("ApplicationStatus"));
    EXPECT_EQ(item->text(QStringLiteral("Status")), QStringLiteral("Active"));
    EXPECT_EQ(item->text(QStringLiteral("Title")), QStringLiteral("Orvanta"));
    keepPanel(QStringLiteral("panel-offline"));
}

TEST_F(TrayStates, TheyFollowTheConnector) {
    startEverything();
    ASSERT_TRUE(waitForToolTip(QStringLiteral("Orvanta Not Paired"))) << scene();
    EXPECT_TRUE(isPicture(QStringLiteral("MenuBarNotPaired")));
    EXPECT_EQ(shownTexts().value(0), QStringLiteral("Status: Not Paired"));
    keepPanel(QStringLiteral("panel-not-paired"));

    ASSERT_TRUE(connector().post(QStringLiteral("/api/ov/pair/start")));
    ASSERT_TRUE(waitForToolTip(QStringLiteral("Orvanta Online"))) << scene();
    EXPECT_TRUE(isPicture(QStringLiteral("MenuBarOnline")));
    EXPECT_EQ(shownTexts().value(0), QStringLiteral("Status: Online"));
    keepPanel(QStringLiteral("panel-online"));

    ASSERT_TRUE(connector().post(QStringLiteral("/demo/state?value=STARTING")));
    ASSERT_TRUE(waitForToolTip(QStringLiteral("Orvanta Offline"))) << scene();
    EXPECT_TRUE(isPicture(QStringLiteral("MenuBarOffline")));
    EXPECT_EQ(shownTexts().value(0), QStringLiteral("Status: Offline"));
}

TEST_F(TrayStates, ThePanelShowsADifferentPictureForEach) {
    startEverything();
    const auto shown = [this] { return screen->picture().copy(iconArea()); };
    ASSERT_TRUE(waitForToolTip(QStringLiteral("Orvanta Not Paired"))) << scene();
    ASSERT_TRUE(waitFor([this] { return !iconArea().isEmpty(); })) << scene();
    const QImage notPaired = shown();
    ASSERT_TRUE(connector().post(QStringLiteral("/api/ov/pair/start")));
    ASSERT_TRUE(waitFor([&] { return shown() != notPaired; })) << scene();
    const QImage online = shown();
    ASSERT_TRUE(connector().post(QStringLiteral("/demo/state?value=STARTING")));
    ASSERT_TRUE(waitFor([&] { return shown() != online && shown() != notPaired; })) << scene();
}

} // namespace orvanta::tests
