// How the execution log grows: the processor time of n messages, with the complexity that fits them best.

#include "commons/run/session_files.h"
#include "commons/run/xml_log.h"
#include "tests/support/fixed_params.h"
#include "tests/support/temp_dir.h"

#include <filesystem>
#include <memory>

#include <benchmark/benchmark.h>

namespace {

using namespace brask;

const ExTraceableBase<ExDefault> kMessage("", "Unable to back up the mail of the domain");

/// One log after another, in a session of its own. Making and writing them stays out of the figures.
class Run {
public:
    XmlLog& log() { return *xml; }

    /// Ends the log, and begins another. Returns the file that was written; the next call replaces it.
    std::string startAfresh() {
        xml.reset();
        std::filesystem::rename(session->getResultFile(), dir.path("result"));
        xml = std::make_unique<XmlLog>("");
        return dir.path("result");
    }

    void startAfresh(benchmark::State& state) {
        state.PauseTiming();
        startAfresh();
        state.ResumeTiming();
    }

private:
    const test_support::TempDir dir;
    const test_support::FixedParams params{{{"PRODUCT_ROOT_D", dir.path()}, {"BSAADM", "root"}}};
    const SessionLifetimeController controller{dir.path("session")};
    std::unique_ptr<XmlLog> xml = std::make_unique<XmlLog>("");
};

ObjectList domain(int64_t number) {
    return {{"example" + std::to_string(number) + ".com", "Domain"}};
}

void messagesAtTheRootThenInOneObject(benchmark::State& state) {
    Run run;
    for ([[maybe_unused]] auto _ : state) {
        for (int64_t i = 0; i < state.range(0); ++i) {
            run.log().AddMessage(40, kMessage);
        }
        for (int64_t i = 0; i < state.range(0); ++i) {
            run.log().AddMessage(40, kMessage, domain(1));
        }
        run.startAfresh(state);
    }
    state.SetComplexityN(state.range(0));
}

void messagesAtTheRootAndInOneObjectInTurn(benchmark::State& state) {
    Run run;
    for ([[maybe_unused]] auto _ : state) {
        for (int64_t i = 0; i < state.range(0); ++i) {
            run.log().AddMessage(40, kMessage);
            run.log().AddMessage(40, kMessage, domain(1));
        }
        run.startAfresh(state);
    }
    state.SetComplexityN(state.range(0));
}

void addDistinctObjects(XmlLog& log, int64_t count) {
    for (int64_t i = 0; i < count; ++i) {
        log.AddMessage(40, kMessage);
        log.AddMessage(40, kMessage, domain(i));
    }
}

void distinctObjectsBesideMessages(benchmark::State& state) {
    Run run;
    for ([[maybe_unused]] auto _ : state) {
        addDistinctObjects(run.log(), state.range(0));
        run.startAfresh(state);
    }
    state.SetComplexityN(state.range(0));
}

/// A log of 5.9 messages for each object, merged into an empty one.
void mergedResult(benchmark::State& state) {
    Run run;
    const int64_t objects = state.range(0);
    addDistinctObjects(run.log(), objects);
    for (int64_t i = 2 * objects; i < objects * 59 / 10; ++i) {
        run.log().AddMessage(40, kMessage, domain(i % objects));
    }
    const std::string written = run.startAfresh();
    const std::string result = written + ".merged";
    std::filesystem::rename(written, result);
    for ([[maybe_unused]] auto _ : state) {
        AddResultFile(run.log(), result);
        run.startAfresh(state);
    }
    state.SetComplexityN(objects);
}

void oneObject(benchmark::internal::Benchmark* bench) {
    bench->Arg(5'000)->Arg(10'000)->Arg(20'000)->Arg(40'000)->Arg(59'000);
    bench->Unit(benchmark::kMillisecond)->Complexity();
}

void manyObjects(benchmark::internal::Benchmark* bench) {
    bench->Arg(1'250)->Arg(2'500)->Arg(5'000)->Arg(10'000);
    bench->Unit(benchmark::kMillisecond)->Complexity();
}

BENCHMARK(messagesAtTheRootThenInOneObject)->Apply(oneObject);
BENCHMARK(messagesAtTheRootAndInOneObjectInTurn)->Apply(oneObject);
BENCHMARK(distinctObjectsBesideMessages)->Apply(manyObjects);
BENCHMARK(mergedResult)->Apply(manyObjects);

} // namespace
