// SPDX-License-Identifier: MIT
#include "desktop/session_manager.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <utility>

/// Exported for session managers, and in no header.
extern "C" int _IceTransNoListen(const char* protocol);

namespace orvanta::tests {
namespace {

/// The library lets no program in while any of them is missing.
constexpr unsigned long kAllCallbacks =
    SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask |
    SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask |
    SmsSaveYourselfDoneProcMask | SmsCloseConnectionProcMask | SmsSetPropertiesProcMask |
    SmsDeletePropertiesProcMask | SmsGetPropertiesProcMask;

bool isReadable(int descriptor) {
    pollfd one{.fd = descriptor, .events = POLLIN, .revents = 0};
    return ::poll(&one, 1, 0) > 0;
}

Bool letEverybodyIn(char*) {
    return True;
}

void ignoreFailure(IceConn) {}

void ignoreDeletion(SmsConn, SmPointer, int count, char** names) {
    std::for_each_n(names, count, [](char* name) { std::free(name); });
    std::free(names);
}

Status registerClient(SmsConn client, SmPointer, char* previousId) {
    if (previousId) {
        std::free(previousId);
        return 0;
    }
    char* const id = SmsGenerateClientID(client);
    SmsRegisterClientReply(client, id);
    std::free(id);
    // As the protocol wants it of every new program.
    SmsSaveYourself(client, SmSaveLocal, False, SmInteractStyleNone, False);
    return 1;
}

} // namespace

SessionManager::SessionManager() {
    char failure[256] = {};
    IceSetIOErrorHandler(ignoreFailure);
    // Whoever could reach the machine would be let in.
    _IceTransNoListen("tcp");
    SmsInitialize("orvanta-test", "1", greet, this, letEverybodyIn, sizeof failure, failure);
    if (IceListenForConnections(&m_doorCount, &m_doors, sizeof failure, failure)) {
        for (int index = 0; index < m_doorCount; ++index) {
            IceSetHostBasedAuthProc(m_doors[index], letEverybodyIn);
        }
        char* const addresses = IceComposeNetworkIdList(m_doorCount, m_doors);
        m_address = QString::fromLatin1(addresses);
        std::free(addresses);
    }
}

SessionManager::~SessionManager() {
    closeConnection();
    IceFreeListenObjs(m_doorCount, m_doors);
}

void SessionManager::handleMessages() {
    for (int index = 0; index < m_doorCount; ++index) {
        if (isReadable(IceGetListenConnectionNumber(m_doors[index]))) {
            accept(m_doors[index]);
        }
    }
    while (m_connection && isReadable(IceConnectionNumber(m_connection))) {
        if (IceProcessMessages(m_connection, nullptr, nullptr) == IceProcessMessagesIOError) {
            closeConnection();
        }
    }
}

void SessionManager::accept(IceListenObj door) {
    IceAcceptStatus status = IceAcceptFailure;
    m_connection = IceAcceptConnection(door, &status);
}

void SessionManager::closeConnection() {
    if (m_client) {
        SmsCleanUp(std::exchange(m_client, nullptr));
    }
    if (m_connection) {
        IceSetShutdownNegotiation(m_connection, False);
        IceCloseConnection(std::exchange(m_connection, nullptr));
    }
}

void SessionManager::logOut() {
    SmsSaveYourself(m_client, SmSaveBoth, True, SmInteractStyleNone, False);
}

/// The first time after it has registered, then when it is ready to leave.
void SessionManager::handleSaved(SmsConn client, SmPointer self, Bool) {
    auto* const manager = static_cast<SessionManager*>(self);
    if (manager->m_client) {
        SmsDie(client);
    } else {
        SmsSaveComplete(client);
        manager->m_client = client;
    }
}

void SessionManager::handleGone(SmsConn, SmPointer self, int count, char** reasons) {
    SmFreeReasons(count, reasons);
    static_cast<SessionManager*>(self)->closeConnection();
}

void SessionManager::handleProperties(SmsConn, SmPointer self, int count, SmProp** properties) {
    for (int index = 0; index < count; ++index) {
        if (std::strcmp(properties[index]->name, SmRestartStyleHint) == 0) {
            static_cast<SessionManager*>(self)->m_restartStyle =
                *static_cast<unsigned char*>(properties[index]->vals[0].value);
        }
        SmFreeProperty(properties[index]);
    }
    std::free(properties);
}

Status SessionManager::greet(SmsConn, SmPointer self, unsigned long* mask, SmsCallbacks* callbacks,
                             char**) {
    *mask = kAllCallbacks;
    *callbacks = {
        .register_client = {registerClient, self},
        .interact_request = {[](SmsConn, SmPointer, int) {}, self},
        .interact_done = {[](SmsConn, SmPointer, Bool) {}, self},
        .save_yourself_request = {[](SmsConn, SmPointer, int, Bool, int, Bool, Bool) {}, self},
        .save_yourself_phase2_request = {[](SmsConn, SmPointer) {}, self},
        .save_yourself_done = {handleSaved, self},
        .close_connection = {handleGone, self},
        .set_properties = {handleProperties, self},
        .delete_properties = {ignoreDeletion, self},
        .get_properties = {[](SmsConn, SmPointer) {}, self},
    };
    return 1;
}

} // namespace orvanta::tests
