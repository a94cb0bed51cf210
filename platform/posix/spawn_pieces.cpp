// SPDX-License-Identifier: MIT
#include "platform/posix/spawn_pieces.h"

#include <csignal>

namespace orvanta {

SpawnAttributes::SpawnAttributes(int group) {
    ::posix_spawnattr_init(&m_attributes);
    ::posix_spawnattr_setflags(
        &m_attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | group));
    ::posix_spawnattr_setpgroup(&m_attributes, 0);
    sigset_t signals;
    sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&m_attributes, &signals);
    sigfillset(&signals);
    sigdelset(&signals, SIGKILL);
    sigdelset(&signals, SIGSTOP);
    ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
}

SpawnAttributes::~SpawnAttributes() {
    ::posix_spawnattr_destroy(&m_attributes);
}

char* const* StringVector::pointers() {
    m_pointers.clear();
    for (QByteArray& string : m_strings) {
        m_pointers.push_back(string.data());
    }
    m_pointers.push_back(nullptr);
    return m_pointers.data();
}

} // namespace orvanta
