// Runs a fuzz target without libFuzzer: first every file of a folder as it is, then a number of mutated and
// crossed copies of them. The same folder, number and seed give the same inputs everywhere.
//
//     fuzz_NAME CORPUS_FOLDER RUNS SEED
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "check.h"

namespace {

constexpr size_t MAX_INPUT = 4096;

std::vector<std::string> read_corpus(const char* folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> corpus;
    for (const auto& path : paths) {
        std::ifstream file(path, std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return corpus;
}

size_t below(std::mt19937& random, size_t bound) { return bound ? random() % bound : 0; }

// A random piece of a text, up to 32 bytes.
std::string piece_of(std::mt19937& random, const std::string& text) {
    const size_t start = below(random, text.size());
    return text.substr(start, 1 + below(random, 32));
}

void mutate(std::mt19937& random, std::string& text, const std::string& other) {
    const size_t at = below(random, text.size() + 1);
    switch (random() % 7) {
        case 0:
            if (at < text.size())
                text[at] = static_cast<char>(static_cast<uint32_t>(text[at]) ^ (1u << random() % 8));
            break;
        case 1:
            if (at < text.size()) text[at] = static_cast<char>(random());
            break;
        case 2:
            text.erase(at, 1 + below(random, 16));
            break;
        case 3:
            text.insert(at, piece_of(random, text));
            break;
        case 4:
            text.insert(at, piece_of(random, other));
            break;
        case 5:
            text.insert(at, std::string(1 + below(random, 300), static_cast<char>(random())));
            break;
        default:
            text = text.substr(0, at) + other.substr(below(random, other.size()));
            break;
    }
}

void run(const std::string& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s CORPUS_FOLDER RUNS SEED\n", argv[0]);
        return 2;
    }
    const std::vector<std::string> corpus = read_corpus(argv[1]);
    if (corpus.empty()) {
        std::fprintf(stderr, "%s holds no files\n", argv[1]);
        return 1;
    }
    const long runs = std::strtol(argv[2], nullptr, 10);
    std::mt19937 random(static_cast<uint32_t>(std::strtoul(argv[3], nullptr, 10)));
    for (const std::string& input : corpus) run(input);
    for (long i = 0; i < runs; ++i) {
        std::string input = corpus[below(random, corpus.size())];
        for (size_t n = 1 + below(random, 6); n > 0; --n)
            mutate(random, input, corpus[below(random, corpus.size())]);
        input.resize(std::min(input.size(), MAX_INPUT));
        run(input);
    }
    std::printf("%zu files and %ld mutated inputs\n", corpus.size(), runs);
    return 0;
}
