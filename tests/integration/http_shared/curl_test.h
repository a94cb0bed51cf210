// SPDX-License-Identifier: MIT
#pragma once

#include "integration/http/exchange_outcome.h"
#include "integration/http/scripted_server.h"
#include "platform/curl/curl_sessions.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <memory>
#include <sys/wait.h>

namespace orvanta {

inline const QByteArray kOk = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

/// Whether this process has a child, running or not yet reaped.
inline bool hasChildren() {
    siginfo_t child{};
    return ::waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
}

/// Sessions with limits that no test should reach, and programs to stand in for curl.
class CurlTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(hasChildren());
        use(20);
    }
    void TearDown() override {
        m_sessions.reset();
        EXPECT_TRUE(spinUntil([] { return !hasChildren(); }));
    }

    void use(double idle, const QString& program = QStringLiteral("/usr/bin/curl")) {
        m_sessions = std::make_unique<CurlSessions>(
            watchExit, EnvironmentVariables{}, HttpLimits{Seconds(idle), Seconds::max()}, program);
        m_session = m_sessions->sharedSession();
    }
    /// A program of these lines of a shell.
    QString script(const QByteArray& lines) {
        const QString path = m_folder.filePath(QStringLiteral("script"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + lines);
        EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        return path;
    }
    ExchangeOutcome get(const QString& url) { return outcomeOf(m_session->get(url)); }

    QTemporaryDir m_folder;
    std::unique_ptr<CurlSessions> m_sessions;
    std::shared_ptr<HttpSession> m_session;
};

} // namespace orvanta
