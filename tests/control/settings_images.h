// Images of the settings files, written byte by byte from the layout and without the records.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

// A file of `size` zero bytes that is filled in at offsets.
class Image {
  public:
    explicit Image(size_t size) : bytes(size, '\0') {}

    Image& put8(size_t offset, int value) {
        bytes.at(offset) = static_cast<char>(value);
        return *this;
    }
    Image& put32(size_t offset, int64_t value) {
        for (size_t i = 0; i < 4; ++i) bytes.at(offset + i) = static_cast<char>(value >> 8 * i);
        return *this;
    }
    Image& put_double(size_t offset, double value) {
        bytes.at(offset + 7) = 0;
        std::memcpy(&bytes[offset], &value, 8);
        return *this;
    }
    Image& put_float(size_t offset, float value) {
        bytes.at(offset + 3) = 0;
        std::memcpy(&bytes[offset], &value, 4);
        return *this;
    }
    Image& put_text(size_t offset, const std::string& text) {
        bytes.replace(offset, text.size(), text);
        return *this;
    }
    // Visible, x, y, width, height.
    Image& put_window(size_t offset, int64_t visible, int64_t x, int64_t y, int64_t width, int64_t height) {
        put32(offset, visible).put32(offset + 4, x).put32(offset + 8, y);
        return put32(offset + 12, width).put32(offset + 16, height);
    }
    // The file with its checksum, which is that of the file with its size in front.
    std::string sealed() const {
        Image whole = *this;
        whole.put32(0, static_cast<int64_t>(bytes.size()));
        whole.put32(0, whole.slow_checksum());
        return whole.bytes;
    }

    std::string bytes;

  private:
    int64_t slow_checksum() const {
        uint32_t crc = 0xffffffff;
        for (const char byte : bytes) {
            crc ^= static_cast<unsigned char>(byte);
            for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320 : 0);
        }
        return ~crc & 0xffffffff;
    }
};

// The bytes of a record.
template <typename Record>
std::string image_of(const Record& record) {
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

constexpr size_t SETTINGS_BYTES = 832;
constexpr size_t SETTINGS2_BYTES = 296;

// The defaults of a machine with 16000 megabytes and no database folders.
inline Image default_image() {
    Image image(SETTINGS_BYTES);
    image.put32(8, 40008).put_double(16, 3.0).put_double(24, 7.0).put32(32, 90);
    image.put8(44, 1).put8(45, 1).put32(48, 44).put32(52, 3).put32(56, 1).put_text(68, "127.0.0.1");
    image.put32(120, 256).put32(128, 1).put32(132, -1).put32(136, -1).put32(140, 16000 - 2356);
    image.put_window(668, 1, 0x80000000, 0x80000000, 622, 552);
    image.put_window(688, 0, 1, 1, 150, 70).put_window(708, 1, 1, 1, 150, 368);
    image.put_window(728, 1, 1, 1, 150, 73).put_window(748, 0, 1, 1, 446, 95);
    image.put_window(768, 0, 1, 1, 446, 128);
    image.put_text(788, "MS Shell Dlg").put_float(820, 9.0f).put32(828, 1);
    return image;
}

inline Image default_image2() {
    return Image(SETTINGS2_BYTES).put32(4, 40117).put32(8, 1).put_double(280, 1.0).put_double(288, 0.1);
}

// A value of its own in every field, and in the bytes that no field has.
inline Image full_image() {
    Image image(SETTINGS_BYTES);
    image.put32(4, 11).put32(8, -12).put32(12, 13).put_double(16, 14.5).put_double(24, -15.25);
    image.put32(32, 16).put32(36, 17).put32(40, 18).put8(44, 19).put8(45, 20).put8(46, 21).put8(47, 22);
    image.put32(48, 23).put32(52, 24).put32(56, 25).put32(60, 26).put32(64, 27).put_text(68, "host.example");
    image.put32(120, 28).put32(124, 29).put32(128, 30).put32(132, 31).put32(136, 32).put32(140, 33);
    image.put_text(144, "/wld/folder/").put32(404, 34).put_text(408, "/mtc/folder/");
    image.put_window(668, 35, 36, 37, 38, 39);
    for (size_t i = 0; i < 5; ++i) {
        const auto base = static_cast<int64_t>(100 * (i + 1));
        image.put_window(688 + 20 * i, base, base + 1, base + 2, base + 3, base + 4);
    }
    image.put_text(788, "A Font")
        .put_float(820, 40.5f)
        .put8(824, 41)
        .put8(825, 42)
        .put8(826, 43)
        .put8(827, 44);
    return image.put32(828, 45);
}

inline Image full_image2() {
    Image image(SETTINGS2_BYTES);
    image.put32(4, 51).put32(8, 52).put_text(12, "/some/ballots.txt").put8(272, 53).put8(273, 54);
    return image.put_text(274, "\1\2\3\4\5\6").put_double(280, 55.5).put_double(288, 56.25);
}
