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

} // namespace orvanta::fakes
