// SPDX-License-Identifier: MIT
#include "integration/terminal/pseudo_terminal.h"

#include "platform/posix/per_system.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <unistd.h>

namespace orvanta {
namespace {

QByteArray readWhatIsThere(int descriptor) {
    QByteArray all;
    std::array<char, 65536> buffer;
    pollfd question{descriptor, POLLIN, 0};
    while (::poll(&question, 1, 0) > 0) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count <= 0) {
            break;
        }
        all.append(buffer.data(), count);
    }
    return all;
}

void writeAll(int descriptor, const QByteArray& bytes) {
    if (::write(descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size())) !=
        bytes.size()) {
        throw std::runtime_error("The test could not write.");
    }
}

} // namespace

PseudoTerminal::PseudoTerminal(int columns, int rows)
    : m_viewer(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (::grantpt(m_viewer.get()) != 0 || ::unlockpt(m_viewer.get()) != 0) {
        throw std::runtime_error("There is no pseudo-terminal.");
    }
    m_program = FileDescriptor(::open(::ptsname(m_viewer.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    resize(columns, rows);
}

void PseudoTerminal::resize(int columns, int rows) {
    winsize size = {};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = static_cast<unsigned short>(rows);
    if (::ioctl(m_viewer.get(), TIOCSWINSZ, &size) != 0) {
        throw std::runtime_error("The pseudo-terminal has no size.");
    }
}

void PseudoTerminal::type(const QByteArray& text) {
    writeAll(m_viewer.get(), text);
}

QByteArray PseudoTerminal::read() {
    return readWhatIsThere(m_viewer.get());
}

TestPipe::TestPipe() {
    int ends[2];
    if (!openPipe(ends)) {
        throw std::runtime_error("There is no pipe.");
    }
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
}

QByteArray TestPipe::read() const {
    return readWhatIsThere(readEnd.get());
}

void TestPipe::write(const QByteArray& bytes) const {
    writeAll(writeEnd.get(), bytes);
}

} // namespace orvanta
