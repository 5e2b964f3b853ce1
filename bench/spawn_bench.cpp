// What running a child costs: by the bytes that go through it and back, by the memory of the parent, whose
// tables fork() copies, and by the descriptors that it has open. In wall time, as most of it is the child's.

#include "lib/process/lib/ExecCmd.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace brask;

constexpr const char* kProgram = "/bin/true";

void runProgram(benchmark::State& state) {
    for (auto _ : state) {
        if (ExecCmd(kProgram).exec() != 0) {
            state.SkipWithError("the child failed");
        }
    }
    state.SetComplexityN(state.range(0));
}

void echoedBytes(benchmark::State& state) {
    const std::string text(static_cast<size_t>(state.range(0)), 'x');
    for (auto _ : state) {
        ExecCmd cat("/bin/cat");
        cat.stdinData = text;
        if (cat.exec() != 0 || cat.stdoutData.size() != text.size()) {
            state.SkipWithError("not echoed");
        }
    }
    state.SetComplexityN(state.range(0));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

/// Memory in small pages, all of them in use.
class Ballast {
public:
    explicit Ballast(int64_t mebibytes)
        : size(static_cast<size_t>(mebibytes) << 20),
          pages(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
        madvise(pages, size, MADV_NOHUGEPAGE);
        std::memset(pages, 1, size);
    }

    Ballast(const Ballast&) = delete;
    Ballast& operator=(const Ballast&) = delete;

    ~Ballast() { munmap(pages, size); }

private:
    const size_t size;
    void* const pages;
};

void mebibytesOfParent(benchmark::State& state) {
    const Ballast ballast(state.range(0));
    runProgram(state);
}

/// For comparison: the same child from the system's posix_spawn(), which copies nothing of the parent.
void mebibytesOfParentWithoutFork(benchmark::State& state) {
    const Ballast ballast(state.range(0));
    char* const argv[] = {const_cast<char*>(kProgram), nullptr};
    for (auto _ : state) {
        pid_t child = -1;
        if (posix_spawn(&child, kProgram, nullptr, nullptr, argv, environ) != 0 ||
            waitpid(child, nullptr, 0) != child) {
            state.SkipWithError("the child failed");
        }
    }
    state.SetComplexityN(state.range(0));
}

void openDescriptors(benchmark::State& state) {
    std::vector<int> descriptors(static_cast<size_t>(state.range(0)));
    for (int& descriptor : descriptors) {
        descriptor = open("/dev/null", O_RDONLY); // the child is to find it open
    }
    runProgram(state);
    for (const int descriptor : descriptors) {
        close(descriptor);
    }
}

/// From here on this process and its children are on a kernel without close_range(2).
void refuseCloseRange() {
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_close_range, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{.len = std::size(program), .filter = program};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
        throw std::runtime_error("no filter for system calls");
    }
}

/// The last one to run, as the filter stays.
void openDescriptorsWithoutCloseRange(benchmark::State& state) {
    refuseCloseRange();
    openDescriptors(state);
}

void byDescriptors(benchmark::internal::Benchmark* bench) {
    bench->Arg(1)->Arg(250)->Arg(500)->Arg(1'000)->UseRealTime();
    bench->Unit(benchmark::kMillisecond)->Complexity();
}

void byMemory(benchmark::internal::Benchmark* bench) {
    bench->Arg(1)->Arg(16)->Arg(64)->Arg(256)->Arg(1'024)->UseRealTime();
    bench->Unit(benchmark::kMillisecond)->Complexity();
}

BENCHMARK(echoedBytes)
    ->RangeMultiplier(2)
    ->Range(1 << 20, 1 << 24)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond)
    ->Complexity();
BENCHMARK(mebibytesOfParent)->Apply(byMemory);
BENCHMARK(mebibytesOfParentWithoutFork)->Apply(byMemory);
BENCHMARK(openDescriptors)->Apply(byDescriptors);
BENCHMARK(openDescriptorsWithoutCloseRange)->Apply(byDescriptors);

} // namespace
