// SPDX-License-Identifier: MIT
#include "platform/macos/archive_tool.h"

#include "platform/posix/plain_tree.h"
#include "platform/posix/silent_program.h"
#include "platform/posix/zip_file.h"

#include <QStringList>

namespace orvanta {
namespace {

/// What ditto itself exits with after any failure.
constexpr int kFailed = 1;

} // namespace

int DittoArchiveTool::extractZip(const QString& archive, const QString& destination) {
    if (!isWholeZip(archive)) {
        return kFailed;
    }
    const int status =
        runSilently(QStringLiteral("/usr/bin/ditto"),
                    {QStringLiteral("-x"), QStringLiteral("-k"), archive, destination});
    return status == 0 && !isPlainTree(destination) ? kFailed : status;
}

bool DittoArchiveTool::isSelfContained(const QString& directory) const {
    return isPlainTree(directory);
}

} // namespace orvanta
