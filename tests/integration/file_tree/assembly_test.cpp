// SPDX-License-Identifier: MIT
// A version directory made of a shipped runtime in which something is a link.
#include "integration/file_tree/file_tree_test.h"
#include "runtime/store_files.h"

namespace orvanta {
namespace {

class AssemblyTest : public FileTreeTest {
protected:
    void SetUp() override {
        makeDirectory("shipped");
        makeDirectory("shipped/node-runtime");
        makeFile("shipped/node-runtime/node", "node", 0755);
        makeDirectory("outside");
        makeFile("outside/server.js", "server");
        makeFile("outside/runtime.json", "shipped");
    }
    void assemble() {
        assembleVersion(m_files, {.source = path("shipped"),
                                  .work = path("staging/1-U"),
                                  .versions = path("versions"),
                                  .destination = path("versions/1"),
                                  .metadata = "written"});
    }
    void expectWrittenInTheStoreOnly() const {
        EXPECT_EQ(contentsOf("outside/runtime.json"), "shipped");
        EXPECT_EQ(contentsOf("versions/1/local-server/runtime.json"), "written");
        EXPECT_TRUE(S_ISREG(statusOf("versions/1/local-server/runtime.json").st_mode));
        EXPECT_TRUE(S_ISDIR(statusOf("versions/1/local-server").st_mode));
        EXPECT_EQ(contentsOf("versions/1/local-server/server.js"), "server");
    }
};

TEST_F(AssemblyTest, ARecordThatIsALinkIsReplacedByAFile) {
    makeDirectory("shipped/local-server");
    makeFile("shipped/local-server/server.js", "server");
    makeLink(native("outside/runtime.json"), "shipped/local-server/runtime.json");
    assemble();
    expectWrittenInTheStoreOnly();
    EXPECT_TRUE(S_ISLNK(statusOf("shipped/local-server/runtime.json").st_mode));
}

TEST_F(AssemblyTest, ARecordThatLeadsNowhereIsReplacedByAFile) {
    makeDirectory("shipped/local-server");
    makeFile("shipped/local-server/server.js", "server");
    makeLink(native("outside/none"), "shipped/local-server/runtime.json");
    assemble();
    expectWrittenInTheStoreOnly();
    EXPECT_FALSE(exists("outside/none"));
}

TEST_F(AssemblyTest, APartThatIsALinkIsCopiedFromWhereItLeads) {
    makeLink("../outside", "shipped/local-server");
    assemble();
    expectWrittenInTheStoreOnly();
    EXPECT_TRUE(S_ISLNK(statusOf("shipped/local-server").st_mode));
}

} // namespace
} // namespace orvanta
