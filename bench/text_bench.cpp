// How reading settings and the runtime configuration, base64 and escaping grow with the text.

#include "backup_sign_lib/base64.h"
#include "commons/panel/settings_parser.h"
#include "lib/process/lib/shell_escape.h"
#include "lib/runtime/bsa_conf_load.h"
#include "tests/support/temp_dir.h"

#include <cstdlib>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

namespace {

using namespace brask;

/// One value for each of `count` names. `line` is called with a number and returns its line.
template <class Line>
std::string lines(int64_t count, Line line) {
    std::string text;
    for (int64_t i = 0; i < count; ++i) {
        text += line(std::to_string(i));
    }
    return text;
}

/// Bytes of every value, the same in each run.
std::string someBytes(int64_t count) {
    std::string bytes;
    for (int64_t i = 0; i < count; ++i) {
        bytes += static_cast<char>(i * i >> 3);
    }
    return bytes;
}

/// What is tried on a text of n bytes.
template <class Step>
void onText(benchmark::State& state, const std::string& text, Step step) {
    for (auto _ : state) {
        step(text);
    }
    state.SetComplexityN(state.range(0));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void settings(benchmark::State& state) {
    const std::string text = "[server]\n" + lines(state.range(0), [](const auto& number) {
                                 return "key" + number + " = a value\n";
                             });
    for (auto _ : state) {
        benchmark::DoNotOptimize(SettingsParser().parse(text));
    }
    state.SetComplexityN(state.range(0));
}

void freeEntries(BsaConf& conf) {
    for (size_t i = 0; i < conf.count; ++i) {
        std::free(conf.entries[i].name);
        std::free(conf.entries[i].value);
    }
    std::free(conf.entries);
}

void bsaConf(benchmark::State& state) {
    const test_support::TempDir dir;
    const std::string file =
        dir.write("bsa.conf",
                  lines(state.range(0), [](const auto& number) { return "NAME" + number + " /a/value\n"; }));
    for (auto _ : state) {
        BsaConf conf{};
        if (bsaConfLoad(file.c_str(), &conf) != 0) {
            state.SkipWithError("not loaded");
        }
        freeEntries(conf);
    }
    state.SetComplexityN(state.range(0));
}

void encodeBase64(benchmark::State& state) {
    onText(state, someBytes(state.range(0)), [](const std::string& bytes) {
        std::free(base64Encode(reinterpret_cast<const unsigned char*>(bytes.data()),
                               static_cast<int>(bytes.size())));
    });
}

void decodeBase64(benchmark::State& state) {
    onText(state, std::string(static_cast<size_t>(state.range(0)), 'Q'), [](const std::string& text) {
        int length = 0;
        std::free(base64Decode(text.data(), static_cast<int>(text.size()), &length));
    });
}

void escaping(benchmark::State& state) {
    onText(state, someBytes(state.range(0)),
           [](const std::string& text) { benchmark::DoNotOptimize(escapeForShell(text)); });
}

void quoting(benchmark::State& state) {
    onText(state, someBytes(state.range(0)),
           [](const std::string& text) { benchmark::DoNotOptimize(shellQuote(text)); });
}

BENCHMARK(settings)->RangeMultiplier(2)->Range(1'000, 16'000)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(bsaConf)->RangeMultiplier(2)->Range(32, 1'024)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(encodeBase64)->Range(1 << 13, 1 << 22)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(decodeBase64)->Range(1 << 13, 1 << 22)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(escaping)->Range(1 << 13, 1 << 22)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(quoting)->Range(1 << 13, 1 << 22)->Unit(benchmark::kMillisecond)->Complexity();

} // namespace
