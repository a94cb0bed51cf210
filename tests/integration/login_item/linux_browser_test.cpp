// SPDX-License-Identifier: MIT
#include "platform/linux/browser.h"

#include "fakes/fake_desktop.h"
#include "platform/posix/process_environment.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>

namespace orvanta {
namespace {

bool waitUntil(const std::function<bool()>& condition) {
    const QDeadlineTimer deadline(10'000);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

/// A PATH with an xdg-open of ours on it.
class BrowserOnPath : public testing::Test {
protected:
    void SetUp() override {
        environment.values.set("PATH", "relative:" + QFile::encodeName(folder.path()));
        environment.values.set("MARK", "ours");
        environment.values.set("NOTE", QFile::encodeName(notePath()));
    }
    QString notePath() const { return folder.path() + QStringLiteral("/note"); }
    void install(const QByteArray& commands) {
        QFile program(folder.path() + QStringLiteral("/xdg-open"));
        ASSERT_TRUE(program.open(QIODevice::WriteOnly));
        program.write("#!/bin/sh\n" + commands);
        program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }
    QByteArray note() const {
        QFile file(notePath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QTemporaryDir folder;
    fakes::FakeEnvironment environment;
    QStringList complaints;
    LinuxBrowser browser{environment, [this](const QString& line) { complaints.append(line); }};
};

TEST_F(BrowserOnPath, OpensTheEncodedAddressInTheGivenEnvironment) {
    install("echo \"$# $1 $MARK\" > $NOTE\n");
    browser.open(QUrl(QStringLiteral("https://my.orvanta.example/workspace/a b")));
    EXPECT_TRUE(waitUntil([this] {
        return note() == "1 https://my.orvanta.example/workspace/a%20b ours\n";
    })) << note().toStdString();
}

TEST_F(BrowserOnPath, DoesNotWaitAndLeavesNoZombie) {
    install("read line; /bin/sleep 1; echo $$ > $NOTE\n");
    QElapsedTimer clock;
    clock.start();
    browser.open(QUrl(QStringLiteral("https://my.orvanta.example")));
    EXPECT_LT(clock.elapsed(), 500);
    ASSERT_TRUE(waitUntil([this] { return note().endsWith('\n'); }));
    const pid_t program = note().trimmed().toInt();
    // A zombie could still be sent signals.
    EXPECT_TRUE(waitUntil([program] { return ::kill(program, 0) == -1 && errno == ESRCH; }));
}

TEST_F(BrowserOnPath, WhatAToolkitSetsLaterIsNotHandedOn) {
    const QByteArray startedWith = qgetenv("PATH");
    install("echo \"${ORVANTA_TEST_LATE-none} ${ORVANTA_TEST_EARLY-none}\" > " +
            QFile::encodeName(notePath()) + "\n");
    ::setenv("PATH", QFile::encodeName(folder.path()).constData(), 1);
    ::setenv("ORVANTA_TEST_EARLY", "kept", 1);
    const ProcessEnvironment captured;
    ::setenv("PATH", startedWith.constData(), 1);
    ::unsetenv("ORVANTA_TEST_EARLY");
    ::setenv("ORVANTA_TEST_LATE", "of the toolkit", 1);
    LinuxBrowser(captured, {}).open(QUrl(QStringLiteral("https://my.orvanta.example")));
    ::unsetenv("ORVANTA_TEST_LATE");
    EXPECT_TRUE(waitUntil([this] { return note() == "none kept\n"; })) << note().toStdString();
}

TEST_F(BrowserOnPath, TheLeaveOfAClickToRaiseAWindowGoesToOneProgram) {
    install("echo \"${XDG_ACTIVATION_TOKEN-none} ${DESKTOP_STARTUP_ID-none}\" >> $NOTE\n");
    ::setenv("XDG_ACTIVATION_TOKEN", "of-a-click", 1);
    browser.open(QUrl(QStringLiteral("https://my.orvanta.example")));
    ASSERT_TRUE(waitUntil([this] { return note() == "of-a-click of-a-click\n"; }))
        << note().toStdString();
    browser.open(QUrl(QStringLiteral("https://my.orvanta.example")));
    EXPECT_TRUE(waitUntil([this] { return note() == "of-a-click of-a-click\nnone none\n"; }))
        << note().toStdString();
}

TEST_F(BrowserOnPath, WithoutTheProgramTheUserIsToldTheAddress) {
    browser.open(QUrl(QStringLiteral("https://my.orvanta.example/workspace/a b")));
    EXPECT_EQ(complaints, QStringList{QStringLiteral(
                              "No browser could be opened (xdg-open was not found); the address is "
                              "https://my.orvanta.example/workspace/a%20b")});
}

TEST_F(BrowserOnPath, WhenTheProgramFailsTheUserIsToldTheAddress) {
    install("exit 3\n");
    browser.open(QUrl(QStringLiteral("https://my.orvanta.example")));
    EXPECT_TRUE(waitUntil([this] { return !complaints.isEmpty(); }));
    EXPECT_EQ(complaints, QStringList{QStringLiteral(
                              "No browser could be opened (xdg-open failed); the address "
                              "is https://my.orvanta.example")});
}

TEST_F(BrowserOnPath, AProgramThatTheSystemRefusesIsReported) {
    QFile program(folder.path() + QStringLiteral("/xdg-open"));
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write("#!/gone/interpreter\n");
    program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    program.close();
    browser.open(QUrl(QStringLiteral("https://my.orvanta.example")));
    EXPECT_EQ(complaints, QStringList{QStringLiteral(
                              "No browser could be opened (xdg-open could not be started); the "
                              "address is https://my.orvanta.example")});
}

TEST_F(BrowserOnPath, SuccessAndAnEndByASignalAreNoFailures) {
    for (const char* const end : {"exit 0", "kill -9 $$"}) {
        install(QByteArray("echo $$ > $NOTE; ") + end + '\n');
        browser.open(QUrl(QStringLiteral("https://my.orvanta.example")));
        ASSERT_TRUE(waitUntil([this] { return note().endsWith('\n'); }));
        const pid_t program = note().trimmed().toInt();
        EXPECT_TRUE(waitUntil([program] { return ::kill(program, 0) == -1 && errno == ESRCH; }));
        QFile::remove(notePath());
        QFile::remove(folder.path() + QStringLiteral("/xdg-open"));
    }
    EXPECT_EQ(complaints, QStringList());
}

TEST_F(BrowserOnPath, NothingHappensWithoutAnAddress) {
    install("echo \"$1\" > $NOTE\n");
    browser.open(QUrl(QStringLiteral("--help")));
    browser.open(QUrl());
    const QDeadlineTimer deadline(300);
    EXPECT_TRUE(waitUntil([&deadline] { return deadline.hasExpired(); }));
    EXPECT_EQ(note(), QByteArray());
    EXPECT_EQ(complaints, QStringList());
}

} // namespace
} // namespace orvanta
