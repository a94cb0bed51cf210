// SPDX-License-Identifier: MIT
#include "platform/linux/archive_tool.h"

#include "platform/posix/plain_tree.h"
#include "platform/posix/silent_program.h"
#include "platform/posix/zip_file.h"

#include <QStringList>
#include <QUuid>

namespace orvanta {
namespace {

/// What bsdtar itself exits with after any failure.
constexpr int kFailed = 1;

/// Without -P, names that are absolute lose what makes them so, and names with ".." and anything
/// behind a link are refused. For root, the others undo what only root gets without asking.
QStringList extraction(const QString& archive, const QString& destination) {
    return {QStringLiteral("-x"), QStringLiteral("--no-same-owner"),
            QStringLiteral("--no-same-permissions"), QStringLiteral("--no-acls"),
            QStringLiteral("--no-xattrs"), QStringLiteral("--no-fflags"),
            // Otherwise it asks for one, and asks again a thousand times. Nobody can have locked an
            // archive with this one, so what is locked stays so.
            QStringLiteral("--passphrase"), QUuid::createUuid().toString(), QStringLiteral("-f"),
            archive, QStringLiteral("-C"), destination};
}

} // namespace

int BsdtarArchiveTool::extractZip(const QString& archive, const QString& destination) {
    if (!isWholeZip(archive)) {
        return kFailed;
    }
    const int status = runSilently(m_executable, extraction(archive, destination));
    return status == 0 && !isPlainTree(destination) ? kFailed : status;
}

bool BsdtarArchiveTool::isSelfContained(const QString& directory) const {
    return isPlainTree(directory);
}

} // namespace orvanta
