#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "fakekernel.h"
#include "temproot.h"
#include "twinworld.h"

// What the device tests share: a platform root of their own, the twin's world and the fake
// kernel serving it, and the counts that show whether a layer gave back what it took.

using Lines = std::vector<std::string>;

struct TwinTest : ::testing::Test {
    TempRoot root;
    sim::TwinWorld world;
    fakekernel::FakeKernel kernel{world};
};

// Descriptors the process holds now.
inline int openDescriptors() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return int(std::distance(begin(descriptors), end(descriptors)));
}

// The device buffers' mappings (the driver's and the application's), among all the process's:
// the threads' heaps and the libraries' pools come and go on their own.
inline int bufferMappings() {
    std::ifstream maps("/proc/self/maps");
    int count = 0;
    for (std::string line; std::getline(maps, line);) {
        count += line.find("lumaspecter-v4l2-buffer") != std::string::npos;
    }
    return count;
}

// What `call` prints, stdout then stderr; its result goes to `result`.
inline std::string printedBy(const std::function<int()>& call, int& result) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    result = call();
    const std::string out = testing::internal::GetCapturedStdout();
    return out + testing::internal::GetCapturedStderr();
}

// The first n lines, then the others.
inline Lines prefixThen(const Lines& lines, size_t n, const Lines& more) {
    Lines result(lines.begin(), lines.begin() + std::min(n, lines.size()));
    result.insert(result.end(), more.begin(), more.end());
    return result;
}

// "a b*3 c": the words of `text`, a word*n n times over ("a b b b c"), for short table rows.
inline std::vector<std::string> expandWords(const std::string& text) {
    std::vector<std::string> words;
    std::istringstream tokens(text);
    for (std::string token; tokens >> token;) {
        const size_t star = token.find('*');
        const int times = star == std::string::npos ? 1 : std::stoi(token.substr(star + 1));
        words.insert(words.end(), size_t(times), token.substr(0, star));
    }
    return words;
}
