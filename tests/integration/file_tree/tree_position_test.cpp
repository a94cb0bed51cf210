// SPDX-License-Identifier: MIT
#include "platform/posix/tree_position.h"

#include "integration/file_tree/file_tree_test.h"

#include <cerrno>

namespace orvanta {
namespace {

class TreePositionTest : public FileTreeTest {
protected:
    TreePosition atTop() const {
        FileDescriptor top;
        EXPECT_EQ(openDirectory(AT_FDCWD, native("."), top), 0);
        return TreePosition(std::move(top));
    }
};

// A link may have taken the place of a directory since somebody looked.
TEST_F(TreePositionTest, DoesNotEnterLinks) {
    makeDirectory("folder");
    makeLink("folder", "link");
    TreePosition position = atTop();
    EXPECT_EQ(position.enter("link"), ENOTDIR);
    EXPECT_TRUE(position.isAtTop());
    EXPECT_EQ(position.enter("folder"), 0);
    EXPECT_FALSE(position.isAtTop());
}

TEST_F(TreePositionTest, NoticesThatItsDirectoryWasMoved) {
    makeDirectory("one");
    makeDirectory("one/folder");
    makeDirectory("other");
    TreePosition position = atTop();
    FileDescriptor left;
    ASSERT_EQ(position.enter("one"), 0);
    ASSERT_EQ(position.enter("folder"), 0);
    m_files.moveItem(path("one/folder"), path("other/folder"));
    EXPECT_EQ(position.leave(left), ESTALE);
    m_files.moveItem(path("other/folder"), path("one/folder"));
    EXPECT_EQ(position.leave(left), 0);
    EXPECT_EQ(position.leave(left), 0);
    EXPECT_TRUE(position.isAtTop());
}

} // namespace
} // namespace orvanta
