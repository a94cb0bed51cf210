// SPDX-License-Identifier: MIT
#include "fakes/fake_runtime_services.h"

#include "base/platform_error.h"

namespace orvanta::fakes {

int FakeArchiveTool::extractZip(const QString& archive, const QString& destination) {
    extractions.push_back(
        {archive, destination, m_files.bytesOf(archive), m_files.isInBackground()});
    if (refusal) {
        throw PlatformError(QStringLiteral("fake"), 2, *refusal);
    }
    for (const auto& [path, item] : contents.items) {
        m_files.items[destination + path] = item;
    }
    return exitStatus;
}

bool FakeArchiveTool::isSelfContained(const QString& directory) const {
    return !entangled.contains(directory.section(QLatin1Char('/'), -1));
}

} // namespace orvanta::fakes
