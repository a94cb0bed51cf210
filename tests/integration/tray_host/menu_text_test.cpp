// SPDX-License-Identifier: MIT
#include "platform/linux/tray_host.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

/// What the toolkit makes of a text on its way to the bus: the first "&" that is not at the end
/// becomes the "_" of a mnemonic.
QString onTheBus(const QString& text) {
    QString result = text;
    const qsizetype first = result.indexOf(u'&');
    if (first >= 0 && first < result.size() - 1) {
        result[first] = u'_';
    }
    return result;
}

/// What a host shows of a label: "__" is an underscore, a single one marks what follows it; word
/// joiners have no width.
QString shown(QString label) {
    label.replace(QLatin1String("__"), QString(QChar(0)));
    label.remove(u'_').remove(QChar(0x2060));
    return label.replace(QChar(0), u'_');
}

class MenuText : public testing::TestWithParam<const char*> {};

TEST_P(MenuText, IsShownAsItIs) {
    const QString text = QString::fromUtf8(GetParam());
    EXPECT_EQ(shown(onTheBus(StatusNotifierHost().menuText(text))), text);
}

INSTANTIATE_TEST_SUITE_P(Texts, MenuText,
                         testing::Values("plain", "a_b", "__", "R&D", "&", "&&", "a&", "&a_b&&_",
                                         "_&_", "<b>&amp;</b>", ""));

TEST(MenuTextOfCommands, NeedsNoHiddenCharacters) {
    EXPECT_EQ(StatusNotifierHost().menuText(QStringLiteral("Sign In / Pair")),
              QStringLiteral("Sign In / Pair"));
}

} // namespace
} // namespace orvanta
