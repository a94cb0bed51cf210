// SPDX-License-Identifier: MIT
#include "platform/posix/zip_file.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>

namespace orvanta {
namespace {

constexpr char kEntryMark[] = "PK\3\4";
constexpr char kEndMark[] = "PK\5\6";
/// The record at an archive's end without its comment, whose length its last two bytes tell.
constexpr qsizetype kEndSize = 22;
constexpr qsizetype kLongestComment = 0xFFFF;

bool endsWithRecord(const QByteArray& tail) {
    qsizetype start = tail.lastIndexOf(kEndMark);
    while (start >= 0) {
        const qsizetype end = start + kEndSize;
        if (end <= tail.size() &&
            end + qFromLittleEndian<quint16>(tail.constData() + end - 2) == tail.size()) {
            return true;
        }
        start = start > 0 ? tail.lastIndexOf(kEndMark, start - 1) : -1;
    }
    return false;
}

} // namespace

bool isWholeZip(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray head = file.read(4);
    if (head != kEntryMark && head != kEndMark) {
        return false;
    }
    return file.seek(std::max<qint64>(0, file.size() - kEndSize - kLongestComment)) &&
           endsWithRecord(file.readAll());
}

} // namespace orvanta
