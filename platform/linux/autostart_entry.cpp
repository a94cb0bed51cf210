// SPDX-License-Identifier: MIT
#include "platform/linux/autostart_entry.h"

#include "platform/linux/desktop_entry_text.h"

namespace orvanta {
namespace {

using Keys = QMap<QByteArray, QByteArray>;

bool isTrue(const QByteArray& value) {
    return value == "true" || value == "1";
}

bool isFalse(const QByteArray& value) {
    return value == "false" || value == "0";
}

/// GNOME and the desktops that come from it have such a key each.
bool isSwitchedOffByADesktop(const Keys& keys) {
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        if (key.key().startsWith("X-") && key.key().endsWith("-Autostart-enabled") &&
            isFalse(key.value())) {
            return true;
        }
    }
    return false;
}

std::optional<QByteArrayList> desktopList(const Keys& keys, const QByteArray& key) {
    if (!keys.contains(key)) {
        return std::nullopt;
    }
    QByteArrayList desktops = keys.value(key).split(';');
    desktops.removeAll(QByteArray());
    return desktops;
}

/// GNOME's desktops and systemd look for the program before they undo "%%". They undo it in its
/// arguments, which the program is for env, unless env takes it for an assignment.
QByteArray commandFor(const QByteArray& program) {
    const bool needsEnv = program.contains('%') && !program.contains('=');
    return (needsEnv ? "env " : "") + quotedArgument(program);
}

} // namespace

QByteArray autostartEntry(const QByteArray& program) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Orvanta\n"
           "Comment=Keeps the Desktop Connector running\n"
           "Icon=orvanta-tray\n"
           "Exec=" +
           escapedValue(commandFor(program)) +
           "\n"
           "TryExec=" +
           escapedValue(program) +
           "\n"
           "Terminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

QByteArray switchedOffAutostartEntry(const QByteArray& program) {
    return autostartEntry(program) + "Hidden=true\n";
}

AutostartEntryFacts readAutostartEntry(const QByteArray& text) {
    const Keys keys = desktopEntryKeys(text);
    const QByteArray tryExec = keys.value("TryExec");
    AutostartEntryFacts facts;
    facts.command = commandArguments(keys.value("Exec"));
    facts.isSwitchedOff = isTrue(keys.value("Hidden")) || isSwitchedOffByADesktop(keys) ||
                          keys.value("Type") != "Application" || facts.command.isEmpty();
    facts.tryExec = tryExec.isEmpty() ? std::nullopt : std::optional(tryExec);
    facts.onlyShowIn = desktopList(keys, "OnlyShowIn");
    facts.notShowIn = desktopList(keys, "NotShowIn").value_or(QByteArrayList());
    facts.isMeantForXfce = isTrue(keys.value("X-XFCE-Autostart-Override"));
    return facts;
}

bool isMeantFor(const AutostartEntryFacts& facts, const QByteArrayList& desktops) {
    if (facts.isMeantForXfce && desktops.contains("XFCE")) {
        return true;
    }
    for (const QByteArray& desktop : desktops) {
        if (facts.onlyShowIn && facts.onlyShowIn->contains(desktop)) {
            return true;
        }
        if (facts.notShowIn.contains(desktop)) {
            return false;
        }
    }
    return !facts.onlyShowIn;
}

} // namespace orvanta
