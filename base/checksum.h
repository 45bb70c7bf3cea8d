// CRC-32 (IEEE 802.3, reflected, start value and final inversion all ones), by which settings records and
// data files are told whole.
#pragma once

#include <cstddef>
#include <cstdint>

// The checksum of `bytes` bytes. For data that comes in parts, `before` is the checksum of what came before.
uint32_t crc32(const void* data, size_t bytes, uint32_t before = 0);
