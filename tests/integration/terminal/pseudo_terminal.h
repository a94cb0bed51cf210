// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/file_descriptor.h"

#include <QByteArray>
#include <QString>

namespace orvanta {

/// Both sides of a terminal: the program's, and the one of whoever looks at it and types.
class PseudoTerminal {
public:
    PseudoTerminal(int columns, int rows);

    int programSide() const { return m_program.get(); }
    void resize(int columns, int rows);
    void type(const QByteArray& text);
    /// What has been written or echoed since the last call.
    QByteArray read();
    void hangUp() { m_viewer.reset(); }

private:
    FileDescriptor m_viewer;
    FileDescriptor m_program;
};

/// Two ends of a pipe, both blocking.
struct TestPipe {
    TestPipe();
    /// What is there now.
    QByteArray read() const;
    void write(const QByteArray& bytes) const;

    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

} // namespace orvanta
