// SPDX-License-Identifier: MIT
#include "integration/tray/copied_tray.h"
#include "integration/tray/tray_process.h"

#include <QDir>
#include <QFile>

namespace orvanta::tests {

class TrayOptions : public TrayTest {
protected:
    int run(const QStringList& arguments) {
        tray.setProcessEnvironment(environment);
        tray.start(executable, arguments);
        const int code = waitForExit();
        output = tray.readAllStandardOutput();
        errors = tray.readAllStandardError();
        return code;
    }

    QByteArray output;
    QByteArray errors;
};

TEST_F(TrayOptions, VersionIsPrinted) {
    EXPECT_EQ(run({QStringLiteral("--version")}), 0);
    EXPECT_EQ(output, "orvanta-tray " ORVANTA_VERSION "\n");
}

TEST_F(TrayOptions, HelpNamesTheOptions) {
    EXPECT_EQ(run({QStringLiteral("--help")}), 0);
    for (const char* option : {"--terminal", "--version", "--help"}) {
        EXPECT_TRUE(output.contains(option)) << option;
    }
}

TEST_F(TrayOptions, AnUnknownOptionGetsTheUsageAndStatus2) {
    for (const char* wrong : {"--dance", "-x", "word", "--terminal=yes", ""}) {
        EXPECT_EQ(run({QString::fromLatin1(wrong)}), 2) << wrong;
        EXPECT_TRUE(
            errors.startsWith("orvanta-tray: \"" + QByteArray(wrong) + "\" is no option.\n"))
            << errors.toStdString();
        EXPECT_TRUE(errors.contains("Usage: ")) << errors.toStdString();
        EXPECT_EQ(output, "");
    }
    EXPECT_EQ(starts(), 0);
}

TEST_F(TrayOptions, WithoutResourcesOneLineSaysWhereTheyWereLookedFor) {
    QDir(home.path()).mkpath(QStringLiteral("lonely/bin"));
    const QString copy = home.filePath(QStringLiteral("lonely/bin/orvanta-tray"));
    ASSERT_TRUE(QFile::copy(executable, copy));
    executable = copy;
    EXPECT_EQ(run({QStringLiteral("--terminal")}), 1);
    EXPECT_EQ(output, "");
    EXPECT_EQ(errors.count('\n'), 1) << errors.toStdString();
    EXPECT_TRUE(errors.contains(home.filePath(QStringLiteral("lonely/share/orvanta")).toUtf8()))
        << errors.toStdString();
}

TEST_F(TrayOptions, WithoutItsDesktopPartOneLineSaysWhatToDo) {
    executable = copyTray(executable, home.filePath(QStringLiteral("prefix")));
    const QString module =
        home.filePath(QStringLiteral("prefix/lib/orvanta-tray/modules/desktop.so"));
    ASSERT_TRUE(QFile::remove(module));
    EXPECT_EQ(run({}), 1);
    EXPECT_EQ(output, "");
    EXPECT_EQ(errors.count('\n'), 1) << errors.toStdString();
    EXPECT_TRUE(errors.startsWith("orvanta-tray: ")) << errors.toStdString();
    EXPECT_TRUE(errors.contains("desktop.so, a part of Orvanta, could not be loaded; install "
                                "Orvanta again ("))
        << errors.toStdString();
}

} // namespace orvanta::tests
