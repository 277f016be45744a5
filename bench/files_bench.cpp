// Settings files: parse and format of a whole .qxs, the work behind File, Open and Save.

#include "files/qxs_format.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>

namespace {

std::string Shipped_Default() {
    std::ifstream in(QUORLEN_DATA_DIR "/RZ400_800M3_Default_Settings.qxs", std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void BM_Parse_Qxs(benchmark::State& state) {
    const std::string text = Shipped_Default();
    for (auto _ : state)
        benchmark::DoNotOptimize(quorlen::Parse_Qxs(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_Parse_Qxs);

void BM_Format_Qxs(benchmark::State& state) {
    auto content = quorlen::Parse_Qxs(Shipped_Default());
    for (auto _ : state)
        benchmark::DoNotOptimize(quorlen::Format_Qxs(content->bytes, content->comment));
}
BENCHMARK(BM_Format_Qxs);

} // namespace

BENCHMARK_MAIN();
