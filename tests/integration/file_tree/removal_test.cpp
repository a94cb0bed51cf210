// SPDX-License-Identifier: MIT
#include "integration/file_tree/file_tree_test.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>

namespace orvanta {
namespace {

constexpr uid_t kNobody = 65534;

class RemovalTest : public FileTreeTest {
protected:
    std::string removalFailure(const QByteArray& name) const {
        return failureOf([&] { PosixFileManager().removeItem(path(name)); });
    }

    /// Root may do everything everywhere, so the removal happens as somebody else.
    int removeAsNobody(const QByteArray& name) const {
        const pid_t child = ::fork();
        if (child == 0) {
            if (::geteuid() == 0 && ::setuid(kNobody) != 0) {
                ::_exit(2);
            }
            ::_exit(removalFailure(name).empty() ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    void giveToNobody(const QByteArray& name) const {
        if (::geteuid() == 0) {
            ASSERT_EQ(::lchown(native(name).constData(), kNobody, kNobody), 0);
        }
    }
};

TEST_F(RemovalTest, NeverFollowsALink) {
    makeDirectory("outside");
    makeFile("outside/precious", "x");
    makeDirectory("tree");
    makeDirectory("tree/sub");
    makeLink("../../outside", "tree/sub/link");
    makeLink(native("outside"), "tree/absolute");
    makeLink("../outside/precious", "tree/file-link");
    makeLink(".", "tree/loop");
    makeLink("outside", "top-link");
    m_files.removeItem(path("tree"));
    m_files.removeItem(path("top-link/"));
    EXPECT_FALSE(exists("tree"));
    EXPECT_FALSE(exists("top-link"));
    EXPECT_EQ(contentsOf("outside/precious"), "x");
}

TEST_F(RemovalTest, RemovesWhatForbidsIt) {
    makeDirectory("tree");
    for (const char* name : {"tree/read", "tree/none", "tree/write", "tree/none/below"}) {
        makeDirectory(name);
        makeFile(name + QByteArray("/file"), "x", 0000);
        giveToNobody(name);
        giveToNobody(name + QByteArray("/file"));
    }
    makeFile("tree/none/below/other", "x");
    giveToNobody("tree");
    giveToNobody("tree/none/below/other");
    ASSERT_EQ(::chmod(native("tree/read").constData(), 0500), 0);
    ASSERT_EQ(::chmod(native("tree/write").constData(), 0200), 0);
    ASSERT_EQ(::chmod(native("tree/none/below").constData(), 0000), 0);
    ASSERT_EQ(::chmod(native("tree/none").constData(), 0000), 0);
    ASSERT_EQ(::chmod(native("tree").constData(), 0500), 0);
    ASSERT_EQ(::chmod(native(".").constData(), 0777), 0);
    EXPECT_EQ(removeAsNobody("tree"), 0);
    EXPECT_FALSE(exists("tree"));
}

TEST_F(RemovalTest, SaysWhatCannotBeRemoved) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "NOT RUN: only root can put a file of somebody else's into the tree.";
    }
    makeDirectory("tree");
    makeDirectory("tree/foreign");
    makeFile("tree/foreign/file", "x");
    giveToNobody("tree");
    ASSERT_EQ(::chmod(native(".").constData(), 0777), 0);
    EXPECT_EQ(removeAsNobody("tree"), 1);
    EXPECT_TRUE(exists("tree/foreign/file"));
}

TEST_F(RemovalTest, RemovesSingleItems) {
    makeFile("file", "x");
    makeDirectory("empty");
    ASSERT_EQ(::mkfifo(native("pipe").constData(), 0600), 0);
    for (const char* name : {"file", "empty", "pipe"}) {
        m_files.removeItem(path(name));
        EXPECT_FALSE(exists(name));
    }
    EXPECT_EQ(removalFailure("none"), "“~/none” could not be removed: No such file or directory.");
}

TEST_F(RemovalTest, RefusesNamesOfOtherDirectories) {
    makeDirectory("a");
    makeDirectory("a/b");
    for (const char* name : {"a/b/..", "a/b/.", "a/b/../", ".", ".."}) {
        EXPECT_EQ(removalFailure(name),
                  "“~/" + std::string(name) + "” could not be removed: Invalid argument.");
    }
    EXPECT_TRUE(exists("a/b"));
}

TEST_F(RemovalTest, RemovesAndCopiesTreesDeeperThanPathsAndDescriptorsReach) {
    constexpr int kDepth = 200;
    const QByteArray name(100, 'd');
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few{64, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &few);
    makeDirectory("deep");
    int directory = ::open(native("deep").constData(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < kDepth; ++i) {
        ASSERT_EQ(::mkdirat(directory, name.constData(), 0755), 0);
        const int below = ::openat(directory, name.constData(), O_RDONLY | O_DIRECTORY);
        ::close(directory);
        directory = below;
    }
    ASSERT_EQ(::symlinkat("/", directory, "bottom"), 0);
    ::close(directory);
    m_files.copyItem(path("deep"), path("copy"));
    m_files.removeItem(path("deep"));
    m_files.removeItem(path("copy"));
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_FALSE(exists("deep"));
    EXPECT_FALSE(exists("copy"));
}

} // namespace
} // namespace orvanta
