// SPDX-License-Identifier: MIT
#include "platform/posix/desktop_services.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>

#include <thread>
#include <vector>

namespace orvanta {
namespace {

const QByteArray kOfNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
const QByteArray kOfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

TEST(ContentDigest, AgreesWithTheKnownDigests) {
    const std::unique_ptr<ContentDigest> digest = makeContentDigest();
    EXPECT_EQ(digest->sha256(QByteArray()), kOfNothing);
    EXPECT_EQ(digest->sha256("abc"), kOfAbc);
}

TEST(ContentDigest, AgreesWithAnotherImplementation) {
    const std::unique_ptr<ContentDigest> digest = makeContentDigest();
    for (const qsizetype size : {1, 55, 56, 63, 64, 65, 1000, 10'000'000}) {
        const QByteArray bytes(size, static_cast<char>(size));
        EXPECT_EQ(digest->sha256(bytes),
                  QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
    }
}

TEST(ContentDigest, WorksOnManyThreadsAtOnce) {
    const std::unique_ptr<ContentDigest> digest = makeContentDigest();
    std::vector<QByteArray> results(4);
    std::vector<std::thread> threads;
    for (QByteArray& result : results) {
        threads.emplace_back([&digest, &result] {
            for (int i = 0; i < 1000; ++i) {
                result = digest->sha256("abc");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(results, std::vector<QByteArray>(4, kOfAbc));
}

} // namespace
} // namespace orvanta
