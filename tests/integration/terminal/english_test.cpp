// SPDX-License-Identifier: MIT
#include "platform/posix/process_setup.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <langinfo.h>

namespace orvanta {
namespace {

/// Changes the variables and the locale of the process, so it needs one of its own.
int categoriesAfterUseEnglish() {
    ::qputenv("LC_ALL", "C.UTF-8");
    ::qputenv("LC_MESSAGES", "C.UTF-8");
    ::qputenv("LANG", "C.UTF-8");
    useEnglish();
    std::setlocale(LC_ALL, "");
    const bool isEnglish = QByteArray(std::setlocale(LC_MESSAGES, nullptr)) == "C";
    const bool isUtf8 = QByteArray(::nl_langinfo(CODESET)) == "UTF-8";
    const bool otherIsPlain = QByteArray(std::setlocale(LC_TIME, nullptr)) == "C";
    return (isEnglish ? 1 : 0) + (isUtf8 ? 2 : 0) + (otherIsPlain ? 4 : 0);
}

TEST(English, IsWhatTheSystemSpeaksWhateverTheLocaleOfTheUser) {
    EXPECT_EXIT(std::_Exit(categoriesAfterUseEnglish()), testing::ExitedWithCode(7), "");
}

} // namespace
} // namespace orvanta
