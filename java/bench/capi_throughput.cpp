// capi_throughput: analyses a UTF-8 text file line by line with
// ZIVOR_ParagraphProcessA of libZIVOR.so, the C counterpart of the Java
// Throughput program, so the two rates compare the same work.
//   capi_throughput DIR FILE THREADS ROUNDS
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "API/ZIVOR.h"

namespace {

// Rounds run before the measured ones, as many as the Java program runs.
constexpr int kWarmUpRounds = 3;

std::vector<std::string> ReadLines(const char* path) {
  std::vector<std::string> lines;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Analyses every line `rounds` times, the threads taking lines in turn;
// returns the number of words.
long long Run(const std::vector<std::string>& lines, int threads, int rounds) {
  std::atomic<size_t> next{0};
  std::atomic<long long> words{0};
  const size_t total = lines.size() * static_cast<size_t>(rounds);
  std::vector<std::thread> workers;
  for (int t = 0; t < threads; ++t) {
    workers.emplace_back([&] {
      for (size_t i = next++; i < total; i = next++) {
        int count = 0;
        ZIVOR_ParagraphProcessA(lines[i % lines.size()].c_str(), &count, true);
        words += count;
      }
    });
  }
  for (std::thread& worker : workers) worker.join();
  return words;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    fprintf(stderr, "usage: capi_throughput DIR FILE THREADS ROUNDS\n");
    return 2;
  }
  const std::vector<std::string> lines = ReadLines(argv[2]);
  const int threads = atoi(argv[3]);
  const int rounds = atoi(argv[4]);
  if (lines.empty() || threads < 1 || rounds < 1 || !ZIVOR_Init(argv[1], 1)) {
    fprintf(stderr, "capi_throughput: no lines, bad counts, or the data did not load\n");
    return 1;
  }
  long long bytes = 0;
  for (const std::string& line : lines) bytes += static_cast<long long>(line.size());
  Run(lines, threads, kWarmUpRounds);
  const auto begin = std::chrono::steady_clock::now();
  const long long words = Run(lines, threads, rounds);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  printf("C API %d thread(s): %6.3f MB/s  (%lld bytes x %d rounds, %lld words, %.2f s)\n",
         threads, static_cast<double>(bytes) * rounds / seconds.count() / 1e6, bytes, rounds,
         words, seconds.count());
  ZIVOR_Exit();
  return 0;
}
