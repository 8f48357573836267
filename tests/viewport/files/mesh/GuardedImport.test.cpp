#include "viewport/files/mesh/GuardedImport.h"

#include "foundation/basic/threads.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace vellum;
using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

using Importer = std::function<Result<MeshData>()>;

constexpr std::chrono::milliseconds ample{30'000};
constexpr std::uint64_t someMemory = 512ULL << 20;

MeshData triangle() {
    MeshData mesh;
    mesh.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.triangles = {{0, 1, 2}};
    mesh.normals.assign(3, {0, 0, 1});
    mesh.colors.assign(3, {1, 1, 1, 1});
    return mesh;
}

std::string faultOf(Importer const& importer, std::chrono::milliseconds const& deadline = ample) {
    Result<MeshData> const result = importGuarded("some.obj", importer, {deadline, someMemory});
    return result.isOk() ? "" : result.fault().line();
}

/// Keeps the optimizer from seeing that nothing follows from a loop or an allocation.
void touch(void* memory) {
    asm volatile("" : : "g"(memory) : "memory");
}

}  // namespace

TEST(GuardedImport, theMeshOfTheChildArrives) {
    pid_t const self = getpid();
    Result<MeshData> const result = importGuarded("some.obj",
                                                  [self]() -> Result<MeshData> {
                                                      MeshData mesh = triangle();
                                                      mesh.partCount = getpid() != self ? 1 : 0;
                                                      return mesh;
                                                  },
                                                  {ample, someMemory});
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    EXPECT_EQ(result.value().positions.size(), 3U);
    EXPECT_EQ(result.value().partCount, 1U) << "imported in this process";
}

TEST(GuardedImport, aMeshOfManyMegabytesArrives) {
    Result<MeshData> const result = importGuarded("some.obj",
                                                  []() -> Result<MeshData> {
                                                      MeshData mesh = triangle();
                                                      mesh.triangles.assign(2'000'000, {0, 1, 2});
                                                      return mesh;
                                                  },
                                                  {ample, someMemory});
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    EXPECT_EQ(result.value().triangles.size(), 2'000'000U);
}

TEST(GuardedImport, theChildKeepsToOneThread) {
    setThreadLimit(4);
    Result<MeshData> const result = importGuarded("some.obj",
                                                  []() -> Result<MeshData> {
                                                      MeshData mesh = triangle();
                                                      mesh.partCount =
                                                          static_cast<unsigned int>(threadLimit());
                                                      return mesh;
                                                  },
                                                  {ample, someMemory});
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    EXPECT_EQ(result.value().partCount, 1U);
    EXPECT_EQ(threadLimit(), 4) << "of this process";
    setThreadLimit(0);
}

TEST(GuardedImport, theFaultOfTheChildArrives) {
    EXPECT_EQ(faultOf([] { return Fault{"other", "is a teapot"}; }), "some.obj: is a teapot");
}

TEST(GuardedImport, anEndlessImportIsStopped) {
    auto const start = std::chrono::steady_clock::now();
    std::string const busy = faultOf(
        []() -> Result<MeshData> {
            for (;;) {
                touch(nullptr);
            }
        },
        std::chrono::milliseconds(200));
    std::string const asleep = faultOf(
        []() -> Result<MeshData> {
            for (;;) {
                pause();
            }
        },
        std::chrono::milliseconds(200));
    EXPECT_EQ(busy, "some.obj: the import did not end within 0.2 s and was stopped");
    EXPECT_EQ(asleep, busy);
    // Far from the hang that it would be, whatever else the machine does.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child process is left";
}

TEST(GuardedImport, crashesAreFaults) {
    EXPECT_THAT(faultOf([]() -> Result<MeshData> { std::abort(); }),
                HasSubstr("some.obj: the importer crashed"));
    EXPECT_THAT(faultOf([]() -> Result<MeshData> {
                    std::signal(SIGSEGV, SIG_DFL);
                    std::raise(SIGSEGV);
                    return triangle();
                }),
                HasSubstr("some.obj: the importer crashed"));
    EXPECT_THAT(faultOf([]() -> Result<MeshData> { _exit(3); }),
                HasSubstr("some.obj: the import ended without"));
    EXPECT_THAT(faultOf([]() -> Result<MeshData> { _exit(0); }), HasSubstr("some.obj: the importer gave no"));
}

TEST(GuardedImport, exceptionsAreFaults) {
    EXPECT_EQ(faultOf([]() -> Result<MeshData> { throw std::runtime_error("no luck"); }),
              "some.obj: the import failed: no luck");
    EXPECT_EQ(faultOf([]() -> Result<MeshData> { throw 7; }), "some.obj: the import failed");
}

TEST(GuardedImport, memoryIsLimited) {
    if (!IMPORT_MEMORY_IS_LIMITED) {
        GTEST_SKIP() << "a sanitizer reserves the address space, so there is no limit to meet";
    }
    Importer const greedy = []() -> Result<MeshData> {
        std::vector<char*> blocks;
        for (;;) {
            blocks.push_back(new char[1 << 20]);
            touch(blocks.back());
        }
    };
    EXPECT_EQ(faultOf(greedy), "some.obj: the import needs more memory than the limit of 512 MB");
    // Also at once, and also when the importer would have caught the failure.
    Importer const atOnce = []() -> Result<MeshData> {
        try {
            touch(new char[std::size_t(1) << 40]);
        } catch (std::bad_alloc const&) {
        }
        return triangle();
    };
    EXPECT_THAT(faultOf(atOnce), HasSubstr("needs more memory"));
}

TEST(GuardedImport, memoryIsLimitedBesideOtherThreads) {
    if (!IMPORT_MEMORY_IS_LIMITED) {
        GTEST_SKIP() << "a sanitizer reserves the address space, so there is no limit to meet";
    }
    // Small blocks lie in the heap of the thread, for which addresses of 64 MB are set aside from its start.
    Importer const greedy = []() -> Result<MeshData> {
        for (int i = 0; i < 7000; ++i) {
            touch(new char[8000]);
        }
        return triangle();
    };
    std::atomic<bool> isOver{false};
    std::thread other([&isOver] {
        while (!isOver) {
            std::vector<std::string> const busy(1000, std::string(100, 'x'));
        }
    });
    ImportLimits const limits{ample, 12ULL << 20};
    std::string const expected = "some.obj: the import needs more memory than the limit of 12 MB";
    auto const faultOfGreedy = [&] {
        Result<MeshData> const result = importGuarded("some.obj", greedy, limits);
        return result.isOk() ? "imported" : result.fault().line();
    };
    for (int i = 0; i < 3; ++i) {
        std::string fault;
        std::thread([&] { fault = faultOfGreedy(); }).join();
        EXPECT_EQ(fault, expected);
    }
    isOver = true;
    other.join();
}

TEST(GuardedImport, anOutcomeBeyondTheMemoryIsAFault) {
    Result<MeshData> const result = importGuarded("some.obj",
                                                  [] {
                                                      MeshData mesh = triangle();
                                                      mesh.notes.emplace_back(3 << 20, 'x');
                                                      return Result<MeshData>(mesh);
                                                  },
                                                  {ample, 1ULL << 20});
    ASSERT_FALSE(result.isOk());
    if (IMPORT_MEMORY_IS_LIMITED) {
        EXPECT_EQ(result.fault().message, "the import needs more memory than the limit of 1 MB");
    }
}

TEST(GuardedImport, nothingOfTheChildReachesTheStreams) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    std::string const fault = faultOf([]() -> Result<MeshData> {
        std::fputs("chatter\n", stdout);
        std::fputs("chatter\n", stderr);
        std::fflush(stdout);
        std::terminate();
    });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(fault, HasSubstr("crashed"));
}

TEST(GuardedImport, whatTheChildSendsIsNotTrusted) {
    EXPECT_THAT(faultOf([]() -> Result<MeshData> {
                    MeshData mesh = triangle();
                    mesh.triangles[0].e0 = 3;
                    return mesh;
                }),
                HasSubstr("out of range"));
}

TEST(GuardedImport, aProgressThatThrowsEndsTheChild) {
    int calls = 0;
    Progress const giveUp = [&calls](std::uint64_t done, std::uint64_t all) {
        EXPECT_EQ(done, 0U);
        EXPECT_EQ(all, 0U);
        if (++calls == 3) {
            throw Cancelled();
        }
    };
    auto const endless = []() -> Result<MeshData> {
        for (;;) {
            pause();
        }
    };
    EXPECT_THROW(static_cast<void>(importGuarded("some.obj", endless, {ample, someMemory}, giveUp)),
                 Cancelled);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "the child is left";
}

TEST(GuardedImport, runsOfOtherThreadsDoNotDelayAnEnd) {
    struct Shared {
        std::atomic<bool> isLongStarted{false};
        std::atomic<bool> isShortOver{false};
    };
    void* const memory =
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    Shared& shared = *new (memory) Shared;
    auto const waitFor = [](std::atomic<bool> const& flag) {
        while (!flag) {
            usleep(1000);
        }
        return triangle();
    };
    std::atomic<bool> isShortRunning{false};
    std::thread brief([&] {
        // Its child ends while that of the other run, which was started later, still lives.
        Result<MeshData> const result = importGuarded(
            "short.obj", [&] { return Result<MeshData>(waitFor(shared.isLongStarted)); }, {ample, someMemory},
            [&](std::uint64_t, std::uint64_t) { isShortRunning = true; });
        EXPECT_TRUE(result.isOk()) << result.fault().line();
        shared.isShortOver = true;
    });
    while (!isShortRunning) {
        usleep(1000);
    }
    Result<MeshData> const result = importGuarded("long.obj",
                                                  [&] {
                                                      shared.isLongStarted = true;
                                                      return Result<MeshData>(waitFor(shared.isShortOver));
                                                  },
                                                  {ample, someMemory});
    EXPECT_TRUE(result.isOk()) << result.fault().line();
    brief.join();
    munmap(memory, sizeof(Shared));
}

TEST(GuardedImport, noChildIsMadeWhileNoChildrenAreWanted) {
    std::atomic<bool> isOver{false};
    auto unwanted = std::make_unique<NoChildren>();
    std::thread other([&unwanted, &isOver] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        isOver = true;
        unwanted.reset();
    });
    // The child is a copy of this process from when it was made.
    Result<MeshData> const result = importGuarded("some.obj",
                                                  [&isOver]() -> Result<MeshData> {
                                                      MeshData mesh = triangle();
                                                      mesh.partCount = isOver ? 1 : 0;
                                                      return mesh;
                                                  },
                                                  {ample, someMemory});
    other.join();
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    EXPECT_EQ(result.value().partCount, 1U);
}

TEST(GuardedImport, aFaultTakesThePlaceOfWhatWasSentBefore) {
    GuardedRun run;
    run.file = "some.obj";
    run.work = [](PutBytes const& put) {
        put("sent", 4);
        throw std::runtime_error("torn");
    };
    run.encodeFault = [](std::string const& message) {
        return std::vector<unsigned char>(message.begin(), message.end());
    };
    std::string arrived;
    run.take = [&arrived](unsigned char const* bytes, std::size_t size) -> std::optional<Fault> {
        arrived.assign(bytes, bytes + size);
        return std::nullopt;
    };
    EXPECT_FALSE(runGuarded(run, {ample, someMemory}).has_value());
    EXPECT_EQ(arrived, "the import failed: torn");
}
