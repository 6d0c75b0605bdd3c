// SPDX-License-Identifier: MIT
// The suite layer on a host of this test's own, which can refuse, forget and fail.
#include "framework/vpix_suites.h"

#include <gmock/gmock.h>

#include <map>
#include <string>

namespace {

enum class Answer { Offer, Refuse, ForgetToWrite, RefuseWithPointer };

struct FakeHost {
    std::map<std::string, Answer> answers;
    std::vector<std::string> requests;
    std::vector<FrameBuffer*> disposed;
    std::int32_t disposeResult = 0;
    std::int32_t formatResult = 0;
    std::uint32_t format = 0;  ///< 0 leaves the caller's value alone.
    std::uint32_t formatBefore = 0;
};

FakeHost host;

std::int32_t dispose(FrameBuffer* handle) {
    host.disposed.push_back(handle);
    return host.disposeResult;
}

std::int32_t getPixelFormat(FrameBuffer*, std::uint32_t* code) {
    host.formatBefore = *code;
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
        try {
            acquire();
            ADD_FAILURE() << name << " was acquired";
        } catch (const Exception& exception) {
            EXPECT_STREQ(exception.what(), what);
            EXPECT_NE(dynamic_cast<const QRB::Exception*>(static_cast<const std::exception*>(&exception)),
                      nullptr);
        }
    }
}

void expectKept(const void* (*acquire)(), const void* (*find)(), const std::string& name) {
    host.answers[name] = Answer::Offer;
    EXPECT_EQ(acquire(), &suite);
    host.requests.clear();
    host.answers[name] = Answer::Refuse;
    EXPECT_EQ(acquire(), &suite);
    EXPECT_EQ(find(), &suite);
    EXPECT_THAT(host.requests, testing::IsEmpty()) << "a suite that was found is not asked for again";
}

class VPixSuites : public testing::Test {
protected:
    VPixSuites() { host = {}; }
};

// The layer keeps what it found for the life of the program, so each suite has one test for everything.

TEST_F(VPixSuites, CreatorSuiteIsTriedAgainUntilItIsThere) {
    expectMissing<VSK::NullVPixCreatorSuiteException>(AcquireVPixCreatorSuite, FindVPixCreatorSuite,
                                                      "Vireo VPix Creator Suite 1",
                                                      "Null VPix Creator Suite");
    expectKept(AcquireVPixCreatorSuite, FindVPixCreatorSuite, "Vireo VPix Creator Suite 1");
}

TEST_F(VPixSuites, SecondCreatorSuiteIsTriedAgainUntilItIsThere) {
    expectMissing<VSK::NullVPixCreator2SuiteException>(AcquireVPixCreator2Suite, FindVPixCreator2Suite,
                                                       "Vireo VPix Creator 2 Suite 3",
                                                       "Null VPix Creator2 Suite");
    expectKept(AcquireVPixCreator2Suite, FindVPixCreator2Suite, "Vireo VPix Creator 2 Suite 3");
}

TEST_F(VPixSuites, VPixSuiteServesFormatsAndScopedHandles) {
    const auto acquire = [] { return static_cast<const void*>(AcquireVPixSuite()); };
    const auto find = [] { return static_cast<const void*>(FindVPixSuite()); };
    FrameBuffer first{};
    FrameBuffer second{};

    // Without the suite.
    expectMissing<VSK::NullVPixSuiteException>(acquire, find, "Vireo VPix Suite 1", "Null VPix Suite");
    ScopedVPix scoped(&first);
    EXPECT_THROW(QueryPixelFormat(scoped), VSK::NullVPixSuiteException);
    EXPECT_THROW(scoped.reset(&second), VSK::NullVPixSuiteException);
    ScopedVPix empty;
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
    EXPECT_EQ(host.formatBefore, badf);
    host.format = vuya;
    host.formatResult = 1;
    EXPECT_EQ(QueryPixelFormat(scoped), vuya) << "only negative results are failures";
    host.formatResult = -1;
    EXPECT_THROW(QueryPixelFormat(scoped), QRB::SuiteCallFailed);
    host.disposeResult = -1;
    EXPECT_THROW(scoped.reset(&second), QRB::SuiteCallFailed);
}

}  // namespace

std::int32_t vrmAcquireSuite(const char* name, std::int32_t version, const void** out) {
    const std::string request = std::string(name) + ' ' + std::to_string(version);
    host.requests.push_back(request);
    const auto found = host.answers.find(request);
    const Answer answer = found == host.answers.end() ? Answer::Refuse : found->second;
    if (answer == Answer::Offer || answer == Answer::RefuseWithPointer) *out = &suite;
    return answer == Answer::Offer || answer == Answer::ForgetToWrite ? 0 : -1;
}
