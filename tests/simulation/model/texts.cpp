// SPDX-License-Identifier: MIT
#include "simulation/model/texts.h"

#include <QRegularExpression>

namespace orvanta::simulation {

namespace {

/// How operations of the store end.
const char kOutcomes[] =
    "Seeded .+|Promoted bundled runtime .+|Update available: .+|Current \\(.+\\)|Updated to .+"
    "|Rolled back to .+\\.|Runtime .+ is incomplete; using bundled runtime\\."
    "|Runtime updater disabled; using bundled runtime\\."
    "|Required runtime update to .+\\.\\.\\.";

/// How they fail.
const char kFailures[] =
    "Runtime updater disabled in config\\.json\\.|Could not seed the runtime store: .+"
    "|Runtime manifest URL is invalid\\.|Runtime manifest check failed: .+"
    "|Runtime manifest was not available\\.|Runtime manifest does not match this app\\."
    "|Could not load runtime state\\.|Runtime archive URL is invalid\\."
    "|Runtime archive checksum did not match the manifest\\."
    "|Runtime archive does not contain local-server and node-runtime\\."
    "|Runtime archive was extracted but failed validation\\.|Runtime update failed: .+"
    "|No previous runtime is available\\.|Previous runtime is incomplete: .+\\.";

/// What else can go wrong; the last ones are the disk's own words and the listener's.
const char kErrors[] =
    "Could not reach the Desktop Connector to (start pairing|sign out)\\."
    "|Launch at login failed: Not now|Required runtime update failed: .+"
    "|(Node runtime|Local server) is missing from the selected Desktop Connector runtime\\."
    "|Failed to start the Desktop Connector: Resource temporarily unavailable"
    "|The version \".*\" cannot name a directory\\.|“.+”: .+\\.|Too many open files";

QRegularExpression whole(const QString& pattern) {
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern));
}

} // namespace

bool isRuntimeLine(const QString& text) {
    static const QRegularExpression kLine = whole(
        QStringLiteral("Runtime: (Checking\\.\\.\\.|Updating\\.\\.\\.|Rolling back\\.\\.\\.|Updated"
                       "|Bundled|external|[0-9v].*|bootstrap|%1|%2)")
            .arg(QString::fromLatin1(kOutcomes), QString::fromLatin1(kFailures)));
    return kLine.match(text).hasMatch();
}

bool isErrorLine(const QString& text) {
    static const QRegularExpression kLine = whole(
        QStringLiteral("%1|%2").arg(QString::fromUtf8(kFailures), QString::fromUtf8(kErrors)));
    return kLine.match(text).hasMatch();
}

} // namespace orvanta::simulation
