"""The two files of the user's settings."""

import struct
import zlib

WINDOW = "5i"
FIELDS = (
    ("checksum", 0, "I"), ("use_game_clock", 4, "i"), ("time_menu_id", 8, "i"), ("time_per_move", 16, "d"),
    ("clock_minutes", 24, "d"), ("clock_moves_limit", 32, "i"), ("operator_time", 36, "i"),
    ("board_inverted", 40, "i"), ("save_on_exit", 44, "B"), ("square_numbers", 45, "B"),
    ("match_opening_kind", 46, "B"), ("square_size", 48, "i"), ("book_mode", 52, "i"),
    ("search_threads", 56, "i"), ("pondering_on", 60, "i"), ("sound_on", 64, "i"), ("dxp_host", 68, "52s"),
    ("hash_mb", 120, "i"), ("wld_enable", 124, "i"), ("wld_parallel_init", 128, "i"),
    ("wld_max_pieces", 132, "i"), ("wld_max_kings_8", 136, "i"), ("wld_cache_mb", 140, "i"),
    ("wld_folder", 144, "260s"), ("mtc_enable", 404, "i"), ("mtc_folder", 408, "260s"),
    ("main_window", 668, WINDOW), ("clock_window", 688, WINDOW), ("game_window", 708, WINDOW),
    ("status_window", 728, WINDOW), ("ponder_window", 748, WINDOW), ("dxp_window", 768, WINDOW),
    ("font_name", 788, "32s"), ("font_size", 820, "f"), ("font_bold", 824, "B"), ("font_italic", 825, "B"),
    ("background_kind", 828, "i"),
)
FIELDS2 = (
    ("checksum", 0, "I"), ("language_id", 4, "i"), ("match_repeats", 8, "i"),
    ("match_ballot_file", 12, "260s"), ("increment_mode", 272, "B"), ("match_incremental", 273, "B"),
    ("initial_seconds", 280, "d"), ("increment_seconds", 288, "d"),
)
SIZE, SIZE2 = 832, 296


def write_record(values, fields, size):
    """A record with these values and zeros elsewhere."""
    record = bytearray(size)
    for name, offset, kind in fields:
        if name in values:
            struct.pack_into("<" + kind, record, offset,
                             values[name].encode() if kind.endswith("s") else values[name])
    struct.pack_into("<I", record, 0, checksum(record))
    return bytes(record)


def checksum(record):
    return zlib.crc32(struct.pack("<I", len(record)) + record[4:])


def read_record(content, fields, size):
    """The fields by name, or None if the record does not fit its checksum."""
    if len(content) != size:
        return None
    if checksum(content) != struct.unpack_from("<I", content)[0]:
        return None
    record = {}
    for name, offset, kind in fields:
        values = struct.unpack_from("<" + kind, content, offset)
        if kind.endswith("s"):
            values = (values[0].split(b"\0")[0].decode("utf-8"),)
        record[name] = values if kind == WINDOW else values[0]
    return record
