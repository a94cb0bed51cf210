// SPDX-License-Identifier: MIT
#include "platform/linux/own_program.h"

#include "platform/linux/program_lookup.h"

#include <QFile>
#include <QFileInfo>

namespace orvanta {

QString ownProgram(const EnvironmentVariables& variables, const QByteArray& invokedAs,
                   const QString& file) {
    const auto found = findProgram(variables, invokedAs);
    const QString path = found ? QFile::decodeName(*found) : file;
    if (path == file) {
        return file;
    }
    return QFileInfo(path).canonicalFilePath() == QFileInfo(file).canonicalFilePath() ? path : file;
}

} // namespace orvanta
