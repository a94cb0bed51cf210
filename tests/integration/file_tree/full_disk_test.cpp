// SPDX-License-Identifier: MIT
#include "integration/file_tree/write_file_test.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>

namespace orvanta {
namespace {

constexpr int kNoDisk = 77;

bool put(const char* path, const QByteArray& bytes) {
    QFile file(QString::fromUtf8(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           file.write(bytes) == bytes.size();
}

/// A name space in which this user may mount.
bool enterOwnSpace() {
    if (::geteuid() == 0) {
        return ::unshare(CLONE_NEWNS) == 0;
    }
    const QByteArray user = "0 " + QByteArray::number(::geteuid()) + " 1";
    const QByteArray group = "0 " + QByteArray::number(::getegid()) + " 1";
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && put("/proc/self/uid_map", user) &&
           put("/proc/self/setgroups", "deny") && put("/proc/self/gid_map", group);
}

/// A disk of 64 KiB at `place`, for this process alone.
bool mountSmallDisk(const QByteArray& place) {
    return enterOwnSpace() && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", place.constData(), "tmpfs", 0, "size=64k") == 0;
}

void fillDisk(const QByteArray& file) {
    const int filler = ::open(file.constData(), O_WRONLY | O_CREAT, 0600);
    const QByteArray page(4096, 'x');
    while (::write(filler, page.constData(), 4096) > 0) {
    }
    ::close(filler);
}

using FullDiskTest = WriteFileTest;

TEST_F(FullDiskTest, AFullDiskKeepsTheOldRecord) {
    makeDirectory("disk");
    const int status = inChild([this] {
        if (!mountSmallDisk(native("disk"))) {
            return kNoDisk;
        }
        PosixFileManager files;
        files.writeFile(path("disk/record"), record(200));
        fillDisk(native("disk/filler"));
        const bool told = writeFailure("disk/record", record(9000)) ==
                              "“~/disk/record” could not be written: No space left on device." &&
                          writeFailure("disk/new", record(100)) ==
                              "“~/disk/new” could not be written: No space left on device.";
        const bool kept = contentsOf("disk/record") == record(200) && !exists("disk/new") &&
                          files.contentsOfDirectory(path("disk")).size() == 2;
        files.writeFile(path("disk/record"), record(3000));
        return told && kept && contentsOf("disk/record") == record(3000) ? 0 : 1;
    });
    if (status == kNoDisk) {
        GTEST_SKIP() << "NOT RUN: this user may not mount a small disk.";
    }
    EXPECT_EQ(status, 0);
}

} // namespace
} // namespace orvanta
