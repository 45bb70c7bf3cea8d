// Makes the sound of the end of a search, start.wav: two pieces set down on a board, the second a little
// lower and softer. Each knock is a few damped tones, as a block of wood has them, behind a very short burst
// of noise. The numbers are fixed, so the file comes out the same each time.
//
//   make_sound data/start.wav
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "base/files.h"

namespace {

constexpr int RATE = 22050;  // samples a second, one channel of 16 bits
constexpr double PI = 3.14159265358979323846;
constexpr double LENGTH = 0.34;  // seconds
constexpr double PEAK = 0.6;     // of full scale

// One tone of a knock: as a multiple of its pitch, its share, and how fast it dies, in 1 / seconds.
struct Tone {
    double ratio, share, decay;
};
constexpr std::array<Tone, 4> TONES = {Tone{1, 1, 38}, Tone{2.42, 0.5, 70}, Tone{3.9, 0.25, 110},
                                       Tone{0.5, 0.35, 30}};

struct Knock {
    double begin;  // seconds
    double pitch;  // Hz
    double share;
};
constexpr std::array<Knock, 2> KNOCKS = {Knock{0, 740, 1}, Knock{0.11, 587, 0.8}};

constexpr double NOISE_SHARE = 0.35;
constexpr double NOISE_DECAY = 420;
constexpr double ATTACK = 900;

void add_knock(std::vector<double>& sound, const Knock& knock) {
    uint32_t noise = 1;
    const auto begin = static_cast<size_t>(knock.begin * RATE);
    for (size_t i = begin; i < sound.size(); ++i) {
        const double t = static_cast<double>(i - begin) / RATE;
        noise = noise * 1664525 + 1013904223;
        double value = NOISE_SHARE * std::exp(-NOISE_DECAY * t) * (noise / 2147483648.0 - 1);
        for (const Tone& tone : TONES)
            value += tone.share * std::exp(-tone.decay * t) * std::sin(2 * PI * knock.pitch * tone.ratio * t);
        sound[i] += knock.share * value * (1 - std::exp(-ATTACK * t));
    }
}

void append_number(std::string& file, uint32_t number, int bytes) {
    for (int i = 0; i < bytes; ++i) file += static_cast<char>(number >> (8 * i) & 0xff);
}

std::string wave_file(const std::vector<double>& sound) {
    double loudest = 0;
    for (const double value : sound) loudest = std::max(loudest, std::abs(value));
    const auto bytes = static_cast<uint32_t>(sound.size() * 2);
    std::string file = "RIFF";
    append_number(file, 36 + bytes, 4);
    file += "WAVEfmt ";
    append_number(file, 16, 4);
    append_number(file, 1, 2);  // plain samples
    append_number(file, 1, 2);  // channels
    append_number(file, RATE, 4);
    append_number(file, RATE * 2, 4);
    append_number(file, 2, 2);
    append_number(file, 16, 2);
    file += "data";
    append_number(file, bytes, 4);
    for (size_t i = 0; i < sound.size(); ++i) {
        // The last hundredth of a second fades, so that the end is no click.
        const double fade = std::min(1.0, static_cast<double>(sound.size() - i) / (RATE / 100.0));
        const long sample = std::lround(sound[i] / loudest * PEAK * 32767 * fade);
        append_number(file, static_cast<uint32_t>(sample), 2);
    }
    return file;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_sound FILE\n");
        return 2;
    }
    std::vector<double> sound(static_cast<size_t>(LENGTH * RATE));
    for (const Knock& knock : KNOCKS) add_knock(sound, knock);
    const std::string file = wave_file(sound);
    if (replace_file(argv[1], file.data(), file.size()) != 0) {
        std::perror(argv[1]);
        return 1;
    }
    return 0;
}
