// SPDX-License-Identifier: MIT
#include "platform/posix/process_environment.h"

#include <gmock/gmock.h>

extern "C" char** environ;

namespace orvanta {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

class ProcessEnvironmentTest : public ::testing::Test {
protected:
    ~ProcessEnvironmentTest() override { environ = m_real; }

    static std::vector<EnvironmentVariables::Variable> capture(std::vector<QByteArray> entries) {
        std::vector<char*> pointers;
        for (QByteArray& entry : entries) {
            pointers.push_back(entry.data());
        }
        pointers.push_back(nullptr);
        environ = pointers.data();
        return ProcessEnvironment().variables().all();
    }

private:
    char** m_real = environ;
};

TEST_F(ProcessEnvironmentTest, KeepsOrderAndBytes) {
    EXPECT_THAT(capture({"Z=1", "A=x=y", "EMPTY=", "BYTES=\xff\xfe", "Z=2"}),
                ElementsAre(Pair("Z", "1"), Pair("A", "x=y"), Pair("EMPTY", ""),
                            Pair("BYTES", "\xff\xfe"), Pair("Z", "2")));
}

TEST_F(ProcessEnvironmentTest, LeavesOutWhatIsNoAssignment) {
    EXPECT_THAT(capture({"A=1", "nothing", "", "B=2"}),
                ElementsAre(Pair("A", "1"), Pair("B", "2")));
}

TEST_F(ProcessEnvironmentTest, AnEnvironmentMayBeMissing) {
    environ = nullptr;
    EXPECT_TRUE(ProcessEnvironment().variables().all().empty());
}

} // namespace
} // namespace orvanta
