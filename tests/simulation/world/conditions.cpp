// SPDX-License-Identifier: MIT
#include "simulation/world/conditions.h"

namespace orvanta::simulation {

const std::vector<const char*> kVersions = {"1.3.2",      "1.3.1",  "1.4.0",     "1.4.1", "2.0.0",
                                            "2.0.0-rc.1", "v1.4.0", "1.4.0/a:1", "..",    "3.0",
                                            "3.1",        "4.0",    "10.0",      "11.0"};

const std::vector<ConfigFile> kConfigs = {
    {R"({"tray":{},"runtimeUpdates":{}})", 5, 5, 8, true, true},
    {R"({"runtimeUpdates":{"checkOnStartup":false}})", 5, 5, 8, true, false},
    {R"({"runtimeUpdates":{"enabled":false}})", 5, 5, 8, false, true},
    {R"({"tray":{"statusPollIntervalSeconds":1,"httpTimeoutSeconds":2}})", 1, 2, 8, true, true},
    {R"({"tray":{"statusPollIntervalSeconds":0.3,"httpTimeoutSeconds":9,)"
     R"("httpResourceTimeoutSeconds":3},"runtimeUpdates":{"channel":"stable"}})",
     0.3, 9, 9, true, true},
    {"{\"tray\":", 5, 5, 8, true, true},
    {R"({"tray":{"statusPollIntervalSeconds":-1},"runtimeUpdates":{"enabled":"no"}})", 5, 5, 8,
     true, true},
};

namespace {

std::vector<ConditionInfo> allInfos() {
    const std::vector<std::int64_t> switchValues = {0, 1};
    const std::vector<const char*> simple = {"good",     "no-content", "server-error",
                                             "redirect", "silence",    "cut"};
    return {
        {"boot", {300, 0, 2500, 9000, 25000}, {}},
        {"announcement",
         {0, 1, 2, 3, 4, 5, 6, 7},
         {"plain", "on-stderr", "none", "twice", "split", "late", "wrong-first", "wrong-only"}},
        {"life", {0, 1, 400, 3000, 60000, 3600000}, {}},
        {"exit-code", {0, 1, 98, 255}, {}},
        {"status",
         {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
         {"running", "needs-pairing", "needs-login", "production-online", "production-tunnel-down",
          "production-unpaired", "starting", "empty-object", "not-json", "wrong-type",
          "server-error", "silence", "cut"}},
        {"status-delay", {5, 900, 2400, 4800, 6500}, {}},
        {"health", {0, 1, 2, 3, 4, 5}, simple},
        {"posts", {0, 1, 2, 3, 4, 5}, simple},
        {"restart-post",
         {0, 1, 2, 3, 4, 5},
         {"asks-host", "does-nothing", "refuses", "exits", "asks-twice", "refuses-and-asks"}},
        {"document-port", {0, 1, 2, 3}, {"own", "none", "zero", "wrong"}},
        {"term", {50, 0, 700, 3000, 20000, -1}, {}},
        {"flood", {0, 3, 100}, {}},
        {"taken-port", {0, 1, 2}, {"exits", "takes-another", "hangs"}},
        {"offer", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}, kVersions},
        {"minimum", {-1, 0, 2, 3, 4, 9}, {}},
        {"manifest",
         {0, 1, 2, 3, 4, 5, 6, 7},
         {"good", "not-found", "not-modified", "not-json", "other-processor", "too-large", "cut",
          "silence"}},
        {"archive",
         {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10},
         {"in-directory", "at-top", "wrong-digest", "cut", "error-page", "incomplete",
          "node-not-executable", "tool-fails", "tool-refused", "bad-address", "silence"}},
        {"channel-delay", {40, 700, 3000, 20000, 55000}, {}},
        {"disk", {0, 1, 2, 3}, {"good", "full", "read-only", "unreadable"}},
        {"launch-refused", switchValues, {}},
        {"exit-notice", {2, 0, 300, 1700}, {}},
        {"output-delay", {1, 0, 400, 2500}, {}},
        {"timer-lag", {0, 3, 50}, {}},
        {"file-time", {50, 2000, 60000, 900000}, {}},
        {"login-refused", switchValues, {}},
        {"listener-refused", switchValues, {}},
        {"store-off", switchValues, {}},
        {"config", {0, 1, 2, 3, 4, 5, 6}, {}},
        {"shipped", {0, -1, 1, 2, 4, 9}, {}},
    };
}

} // namespace

const ConditionInfo& info(Condition condition) {
    static const std::vector<ConditionInfo> infos = allInfos();
    return infos.at(static_cast<std::size_t>(condition));
}

Conditions::Conditions() {
    for (std::size_t i = 0; i < kConditionCount; ++i) {
        m_values[i] = info(static_cast<Condition>(i)).values.front();
    }
}

std::string written(Condition condition, std::int64_t value) {
    const ConditionInfo& about = info(condition);
    const auto place = static_cast<std::size_t>(value);
    const bool hasName = value >= 0 && place < about.names.size();
    return std::string(about.name) + '=' +
           (hasName ? std::string(about.names[place]) : std::to_string(value));
}

} // namespace orvanta::simulation
