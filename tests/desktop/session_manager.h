// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

extern "C" {
#include <X11/ICE/ICElib.h>
#include <X11/SM/SMlib.h>
}

#include <optional>

namespace orvanta::tests {

/// The X session manager of a desktop session: a program in the session reports to it, and is
/// asked by it to leave when the user logs out. One at a time.
class SessionManager {
public:
    SessionManager();
    ~SessionManager();
    SessionManager(const SessionManager&) = delete;
    SessionManager& operator=(const SessionManager&) = delete;

    /// For SESSION_MANAGER in a program's environment; empty when nothing could be opened.
    QString address() const { return m_address; }
    /// Handles what programs have sent. To be called again and again.
    void handleMessages();

    bool hasClient() const { return m_client != nullptr; }
    /// Asks the program to save itself and then to leave.
    void logOut();
    /// What the program wants at the next login, for instance SmRestartNever.
    std::optional<int> restartStyle() const { return m_restartStyle; }

private:
    static Status greet(SmsConn client, SmPointer self, unsigned long* mask,
                        SmsCallbacks* callbacks, char** failure);
    static void handleSaved(SmsConn client, SmPointer self, Bool success);
    static void handleGone(SmsConn client, SmPointer self, int count, char** reasons);
    static void handleProperties(SmsConn client, SmPointer self, int count, SmProp** properties);
    void accept(IceListenObj door);
    void closeConnection();

    int m_doorCount = 0;
    IceListenObj* m_doors = nullptr;
    QString m_address;
    IceConn m_connection = nullptr;
    SmsConn m_client = nullptr;
    std::optional<int> m_restartStyle;
};

} // namespace orvanta::tests
