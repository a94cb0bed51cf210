// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QByteArray>

namespace orvanta {

/// A file under construction beside the place it is meant for. Unless `finish` succeeds, nothing
/// of it remains. The calls return 0 or the system's error number.
class StagedFile {
public:
    explicit StagedFile(const QByteArray& destination);
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    ~StagedFile();

    /// To be called first: the others need it to have succeeded.
    int open();

    /// To be written to.
    int descriptor() const { return m_file.get(); }

    /// Gives the file, once it is on the disk, its name, unless something has that name already
    /// (EEXIST).
    int finish();

private:
    int takeName() const;

    const QByteArray m_destination;
    QByteArray m_temporary;
    FileDescriptor m_file;
};

} // namespace orvanta
