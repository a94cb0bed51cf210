// SPDX-License-Identifier: MIT
// config.json against an independent reading; whatever stands in it, the settings are usable.
#include "base/json.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/plain_record.h"
#include "runtime/mac_config_file.h"

#include <cmath>

namespace orvanta::fuzz {
namespace {

std::optional<MacConfigFile> decodedIfPossible(const QByteArray& document) {
    try {
        return MacConfigFile::decode(document);
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

MacRuntimeUpdateSettings expectedUpdates(PlainRecord& record) {
    return {record.boolean(u"enabled").value_or(true),
            record.text(u"channel").value_or(QStringLiteral("beta")),
            record.text(u"manifestBaseUrl").value_or(QLatin1String(build::kManifestBaseUrl)),
            record.boolean(u"checkOnStartup").value_or(true),
            record.integer(u"checkIntervalHours").value_or(6)};
}

MacTraySettings expectedTray(PlainRecord& record) {
    return {record.number(u"statusPollIntervalSeconds").value_or(5),
            record.number(u"httpTimeoutSeconds").value_or(5),
            record.number(u"httpResourceTimeoutSeconds").value_or(8)};
}

std::optional<MacConfigFile> expectedFile(const QByteArray& document) {
    PlainRecord record(document);
    const MacConfigFile file{record.record(u"runtimeUpdates", expectedUpdates),
                             record.record(u"tray", expectedTray)};
    return record.isValid() ? std::optional(file) : std::nullopt;
}

/// Values of the variable that switches the store off or leaves it alone.
std::optional<QString> variableFor(std::uint16_t choice) {
    static const std::optional<QString> kVariables[] = {
        std::nullopt,           QStringLiteral("false"), QStringLiteral("FaLsE"),
        QStringLiteral("0"),    QStringLiteral("00"),    QStringLiteral(""),
        QStringLiteral("true"), QStringLiteral(" false")};
    return kVariables[choice % std::size(kVariables)];
}

bool isOff(std::uint16_t choice) {
    const auto index = choice % 8;
    return index >= 1 && index <= 3;
}

void tryUpdates(const std::optional<MacConfigFile>& file, const QByteArray& bytes,
                std::uint16_t choice) {
    const auto settings = effectiveRuntimeUpdateSettings(bytes, variableFor(choice));
    require(!settings.channel.isEmpty() && !settings.manifestBaseUrl.isEmpty() &&
                settings.checkIntervalHours >= 1,
            "there is always a channel, an address and an interval");
    MacRuntimeUpdateSettings expected;
    if (file && file->runtimeUpdates) {
        const auto& section = *file->runtimeUpdates;
        expected.enabled = section.enabled;
        expected.checkOnStartup = section.checkOnStartup;
        expected.channel = section.channel.isEmpty() ? expected.channel : section.channel;
        expected.manifestBaseUrl =
            section.manifestBaseUrl.isEmpty() ? expected.manifestBaseUrl : section.manifestBaseUrl;
        expected.checkIntervalHours =
            section.checkIntervalHours < 1 ? 6 : section.checkIntervalHours;
    }
    expected.enabled = expected.enabled && !isOff(choice);
    require(settings == expected, "only senseless values are replaced, one by one");
}

/// `effective` is `written` where that makes sense, else `fallback`.
bool isCorrected(double effective, std::optional<double> written, double fallback) {
    return effective == (written.value_or(0) > 0 ? *written : fallback);
}

void tryTray(const std::optional<MacTraySettings>& written, const MacTraySettings& effective) {
    const auto value = [&](double MacTraySettings::*field) {
        return written ? std::optional((*written).*field) : std::nullopt;
    };
    require(isCorrected(effective.statusPollIntervalSeconds,
                        value(&MacTraySettings::statusPollIntervalSeconds), 5) &&
                isCorrected(effective.httpTimeoutSeconds,
                            value(&MacTraySettings::httpTimeoutSeconds), 5) &&
                isCorrected(effective.httpResourceTimeoutSeconds,
                            value(&MacTraySettings::httpResourceTimeoutSeconds), 8),
            "only limits that are not above zero are replaced, one by one");
    const double resource = effective.sessionResourceTimeoutSeconds();
    require(std::isfinite(effective.statusPollIntervalSeconds) && std::isfinite(resource) &&
                resource >= effective.httpTimeoutSeconds,
            "every limit is finite and the total one is the longer");
}

} // namespace

void tryInput(const QByteArray& input) {
    const FuzzInput parts(input);
    const auto file = decodedIfPossible(parts.bytes);
    require(file == expectedFile(parts.bytes), "the file is read strictly and completely");
    tryUpdates(file, parts.bytes, parts.choice);
    tryTray(file ? file->tray : std::nullopt, effectiveTraySettings(parts.bytes));
}

} // namespace orvanta::fuzz
