// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orvanta::simulation {

/// What can differ from a dull, well-behaved world. The first value of each is the dull one.
enum class Condition : std::size_t {
    // Of a connector; one that runs keeps what it was launched with, unless it turns.
    boot,         ///< ms from its launch until it listens
    announcement, ///< see `Announcement`
    life,         ///< ms until it exits by itself; 0 is never
    exitCode,
    status,       ///< see `StatusReply`
    statusDelay,  ///< ms
    health,       ///< see `SimpleReply`
    posts,        ///< see `SimpleReply`; for pairing and signing out
    restartPost,  ///< see `RestartReply`
    documentPort, ///< see `DocumentPort`
    term,         ///< ms from SIGTERM to its exit; -1 ignores it
    flood,        ///< 4 KiB pieces of output per launch
    takenPort,    ///< see `TakenPort`
    lastOfConnector = takenPort,
    // Of the channel.
    offer,        ///< index into `kVersions`
    minimum,      ///< the same; -1 is none
    manifest,     ///< see `ManifestReply`
    archive,      ///< see `ArchiveReply`
    channelDelay, ///< ms
    // Of the computer.
    disk,            ///< see `Disk`
    launchRefused,   ///< 1: no program can be started
    exitNotice,      ///< ms from an exit to its report
    outputDelay,     ///< ms
    timerLag,        ///< ms by which timers may be late
    fileTime,        ///< µs that each change of a file takes the worker
    loginRefused,    ///< 1: the login item cannot be changed
    listenerRefused, ///< 1: nothing can listen
    storeOff,        ///< 1: by the environment of the tray's next start
    config,          ///< index into `kConfigs`; written to config.json at once
    shipped,         ///< index into `kVersions`; -1: without a record; from the next start on
    count,
};

inline constexpr auto kConditionCount = static_cast<std::size_t>(Condition::count);

enum class Announcement { plain, onStandardError, none, twice, split, late, wrongFirst, wrongOnly };
enum class StatusReply {
    running,
    needsPairing,
    needsLogin,
    productionOnline,
    productionTunnelDown,
    productionUnpaired,
    starting,
    emptyObject,
    notJson,
    wrongType,
    serverError,
    silence,
    cut,
};
enum class SimpleReply { good, noContent, serverError, redirect, silence, cut };
enum class RestartReply { asksHost, doesNothing, refuses, exits, asksTwice, refusesAndAsks };
enum class DocumentPort { own, none, zero, wrong };
enum class TakenPort { exits, takesAnother, hangs };
enum class ManifestReply {
    good,
    notFound,
    notModified,
    notJson,
    otherProcessor,
    tooLarge,
    cut,
    silence,
};
enum class ArchiveReply {
    inDirectory,
    atTop,
    wrongDigest,
    cut,
    errorPage,
    incomplete,
    nodeNotExecutable,
    toolFails,
    toolRefused,
    badAddress,
    silence,
};
enum class Disk { good, full, readOnly, unreadable };

/// Versions that a channel offers or an application ships; the first is what is installed.
extern const std::vector<const char*> kVersions;

struct ConfigFile {
    const char* bytes;
    double pollSeconds;
    double idleSeconds;
    double wholeSeconds;
    bool storeEnabled;
    bool checksAtStart;
};
extern const std::vector<ConfigFile> kConfigs;

/// The conditions at one moment.
class Conditions {
public:
    Conditions();
    std::int64_t operator[](Condition condition) const { return m_values[index(condition)]; }
    template <typename Kind>
    Kind as(Condition condition) const {
        return static_cast<Kind>(m_values[index(condition)]);
    }
    void set(Condition condition, std::int64_t value) { m_values[index(condition)] = value; }

private:
    static std::size_t index(Condition condition) { return static_cast<std::size_t>(condition); }
    std::array<std::int64_t, kConditionCount> m_values{};
};

struct ConditionInfo {
    const char* name;
    /// The dull one first.
    std::vector<std::int64_t> values;
    /// What the values are called; empty for plain numbers.
    std::vector<const char*> names;
};
const ConditionInfo& info(Condition condition);

/// "status=cut", "boot=2500".
std::string written(Condition condition, std::int64_t value);

} // namespace orvanta::simulation
