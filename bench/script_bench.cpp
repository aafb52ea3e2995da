// Splitting script lines into words: our parser (quotes, comments) against a
// plain stream split of the same lines, which knows no quoting.
#include <benchmark/benchmark.h>

#include <sstream>
#include <string>
#include <vector>

#include "script/script_parser.h"

namespace {

const std::vector<std::string>& Lines() {
  static const std::vector<std::string> lines = [] {
    std::vector<std::string> v;
    for (int i = 0; i < 1000; ++i) {
      v.push_back("set Formula \"sin(2*pi*x)+a*x^2\\a=" + std::to_string(i) + "\"  # a comment");
      v.push_back("menu mnuQuantize " + std::to_string(i % 6));
      v.push_back("set chkFPerEA(1) 1");
    }
    return v;
  }();
  return lines;
}

void BM_SplitLines_ours(benchmark::State& state) {
  for (auto _ : state) {
    std::size_t words = 0;
    for (const auto& line : Lines()) words += keldo::script::ParseLine(line).words.size();
    benchmark::DoNotOptimize(words);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long long>(Lines().size()));
}

void BM_SplitLines_yardstick(benchmark::State& state) {
  for (auto _ : state) {
    std::size_t words = 0;
    for (const auto& line : Lines()) {
      std::istringstream in(line);
      std::vector<std::string> w;
      std::string word;
      while (in >> word) w.push_back(word);
      words += w.size();
    }
    benchmark::DoNotOptimize(words);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long long>(Lines().size()));
}

BENCHMARK(BM_SplitLines_ours)->Name("BM_SplitLines/ours");
BENCHMARK(BM_SplitLines_yardstick)->Name("BM_SplitLines/yardstick");

}  // namespace

BENCHMARK_MAIN();
