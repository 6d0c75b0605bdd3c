// SPDX-License-Identifier: MIT
// The suite layer on a host of this test's own, which can refuse, forget and fail.
#include "framework/shared_rows.h"
#include "framework/vpix_suites.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

enum class Answer { Refuse, Offer, ForgetToWrite, RefuseWithPointer };

struct FakeHost {
    std::map<std::string, Answer> answers;
    int requests = 0;
    std::vector<FrameBuffer*> disposed;
    std::int32_t disposeResult = 0;
    std::int32_t formatResult = 0;
    std::int32_t shareResult = 0;
    std::uint32_t format = 0;  ///< 0 leaves the caller's value alone.
};

FakeHost host;

std::int32_t dispose(FrameBuffer* handle) {
    host.disposed.push_back(handle);
    return host.disposeResult;
}

std::int32_t getPixelFormat(FrameBuffer*, std::uint32_t* code) {
    if (host.format != 0) *code = host.format;
    return host.formatResult;
}

const VPixSuite suite{dispose, {}, getPixelFormat};

template <class Exception>
void expectMissing(const void* (*acquire)(), const void* (*find)(), const std::string& name,
                   const char* what) {
    for (const Answer answer : {Answer::Refuse, Answer::ForgetToWrite, Answer::RefuseWithPointer}) {
        host.answers[name] = answer;
        EXPECT_EQ(find(), nullptr);
        EXPECT_THAT([&] { acquire(); }, testing::ThrowsMessage<Exception>(what));
        EXPECT_THROW(acquire(), QRB::Exception);
    }
}

void expectKept(const void* (*acquire)(), const void* (*find)(), const std::string& name) {
    host.answers[name] = Answer::Offer;
    EXPECT_EQ(acquire(), &suite);
    host.requests = 0;
    EXPECT_EQ(acquire(), &suite);
    EXPECT_EQ(find(), &suite);
    EXPECT_EQ(host.requests, 0) << "a suite that was found is not asked for again";
}

// The layer keeps what it found for the life of the program, so each suite has one test for everything.

TEST(VPixSuites, CreatorSuitesAreTriedAgainUntilTheyAreThere) {
    const std::string name = "Vireo VPix Creator Suite 1", secondName = "Vireo VPix Creator 2 Suite 3";
    expectMissing<VSK::NullVPixCreatorSuiteException>(AcquireVPixCreatorSuite, FindVPixCreatorSuite, name,
                                                      "Null VPix Creator Suite");
    expectKept(AcquireVPixCreatorSuite, FindVPixCreatorSuite, name);
    expectMissing<VSK::NullVPixCreator2SuiteException>(AcquireVPixCreator2Suite, FindVPixCreator2Suite,
                                                       secondName, "Null VPix Creator2 Suite");
    expectKept(AcquireVPixCreator2Suite, FindVPixCreator2Suite, secondName);
}

TEST(VPixSuites, VPixSuiteServesFormatsAndScopedHandles) {
    const auto acquire = [] { return static_cast<const void*>(AcquireVPixSuite()); };
    const auto find = [] { return static_cast<const void*>(FindVPixSuite()); };
    FrameBuffer first{}, second{};

    // Without the suite.
    expectMissing<VSK::NullVPixSuiteException>(acquire, find, "Vireo VPix Suite 1", "Null VPix Suite");
    ScopedVPix scoped(&first), empty;
    EXPECT_THROW(QueryPixelFormat(scoped), VSK::NullVPixSuiteException);
    EXPECT_THROW(scoped.reset(&second), VSK::NullVPixSuiteException);
    empty.reset(&first);
    EXPECT_EQ(empty.release(), &first) << "an empty holder needs no suite";

    // With it.
    expectKept(acquire, find, "Vireo VPix Suite 1");
    scoped.reset(&first);
    EXPECT_EQ(scoped.get(), &first);
    scoped.reset(&second);
    EXPECT_THAT(host.disposed, testing::ElementsAre(&first));
    EXPECT_EQ(scoped.release(), &second);
    EXPECT_EQ(scoped.get(), nullptr);
    scoped.reset(&first);
    scoped.reset(nullptr);
    EXPECT_THAT(host.disposed, testing::ElementsAre(&first, &first));
    { const ScopedVPix outOfScope(&second); }
    EXPECT_EQ(host.disposed.size(), 2u) << "only reset disposes";

    constexpr std::uint32_t badf = 0x66646162;
    constexpr std::uint32_t vuya = 0x61797576;
    scoped.reset(&first);
    EXPECT_EQ(QueryPixelFormat(scoped), badf) << "where the host leaves it open";
    host.format = vuya;
    host.formatResult = 1;
    EXPECT_EQ(QueryPixelFormat(scoped), vuya) << "only negative results are failures";
    host.formatResult = -1;
    EXPECT_THROW(QueryPixelFormat(scoped), QRB::SuiteCallFailed);
    host.disposeResult = -1;
    EXPECT_THAT([&] { scoped.reset(&second); },
                testing::ThrowsMessage<QRB::SuiteCallFailed>("Suite call failed"));
}

std::int32_t shareFromTheEnd(TaskSuitePart* part, void* task, std::int32_t length, std::int32_t least) {
    if (host.shareResult < 0) return host.shareResult;
    for (; length > 0; length -= least) part(task, std::max(length - least, 0), length);
    return host.shareResult;
}

const TaskSuite sharing{shareFromTheEnd};

TEST(TaskSuite, SharesRowsOrElseTheyAreRenderedAtOnce) {
    std::vector<std::pair<int, int>> parts;
    const auto rendered = [&] {
        parts.clear();
        shareRows(100, [&](std::int32_t begin, std::int32_t end) { parts.emplace_back(begin, end); });
        return parts;
    };
    const std::string name = "Vireo Task Suite 1";
    const auto atOnce = testing::ElementsAre(std::pair(0, 100));
    host.answers[name] = Answer::Refuse;
    EXPECT_THAT(rendered(), atOnce);
    host.answers[name] = Answer::Offer;
    EXPECT_THAT(rendered(), testing::ElementsAre(std::pair(68, 100), std::pair(36, 68), std::pair(4, 36),
                                                 std::pair(0, 4)));
    host.shareResult = -1;
    EXPECT_THAT(rendered(), atOnce);
}

}  // namespace

std::int32_t vrmAcquireSuite(const char* name, std::int32_t version, const void** out) {
    ++host.requests;
    const Answer answer = host.answers[std::string(name) + ' ' + std::to_string(version)];
    const bool isOfTasks = std::string(name) == VIREO_TASK_SUITE;
    if (answer == Answer::Offer || answer == Answer::RefuseWithPointer)
        *out = isOfTasks ? static_cast<const void*>(&sharing) : &suite;
    return answer == Answer::Offer || answer == Answer::ForgetToWrite ? 0 : -1;
}
