// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <spawn.h>

#include <vector>

namespace orvanta {

/// The attributes of a child that inherits neither blocked nor ignored signals.
class SpawnAttributes {
public:
    /// `group` is POSIX_SPAWN_SETPGROUP, a process group of its own, or POSIX_SPAWN_SETSID, a
    /// session of its own without a terminal.
    explicit SpawnAttributes(int group);
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes();

    posix_spawnattr_t& get() { return m_attributes; }

private:
    posix_spawnattr_t m_attributes;
};

/// Strings in the form of argv and environ.
class StringVector {
public:
    void append(QByteArray string) { m_strings.push_back(std::move(string)); }

    /// Valid until this object changes or ends.
    char* const* pointers();

private:
    std::vector<QByteArray> m_strings;
    std::vector<char*> m_pointers;
};

} // namespace orvanta
