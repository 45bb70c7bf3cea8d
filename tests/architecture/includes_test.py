#!/usr/bin/env python3
"""Checks that every file of the program includes what it uses and uses what it includes.

    includes_test.py PROJECT             complains
    includes_test.py PROJECT --alone     lists the headers without a source file of the same name instead

- A standard header stands in each file that names something of it, or in the header of the same name. What gives
  types, which the interface of another header is made of, may also come with a header of the project that the file
  includes.
- A source file includes the header of the same name first, so its compilation proves that the header needs no other.
- No standard header and no header of the project is included of which the file names nothing.

The names of standard headers are those of the table below; what is not in it is not checked.
"""

import os
import re
import sys

FOLDERS = "base core eval egdb book search records control dxp shell tools cli bench".split()

# Several headers may give a name.
STANDARD = {
    "algorithm": "all_of any_of binary_search clamp copy copy_if copy_n count count_if equal fill fill_n find find_if "
                 "includes is_partitioned is_sorted lower_bound max max_element min min_element next_permutation "
                 "none_of partial_sort replace reverse shuffle sort stable_sort unique upper_bound",
    "array": "array",
    "atomic": "atomic atomic_ref memory_order_acq_rel memory_order_acquire memory_order_relaxed memory_order_release",
    "bit": "bit_floor bit_width countl_zero countr_zero endian popcount",
    "cctype": "isalpha isspace tolower",
    "charconv": "chars_format from_chars to_chars",
    "chrono": "chrono",
    "cinttypes": "PRId64 PRIu64 PRIx64 PRIx32 PRIX64",
    "climits": "INT_MAX INT_MIN CHAR_BIT PATH_MAX",
    "clocale": "setlocale localeconv",
    "cmath": "abs ceil erfc exp fabs floor isfinite isinf isnan ldexp llround log log10 log1p lround nan pow round signbit "
             "sin sqrt",
    "condition_variable": "condition_variable",
    "csignal": "signal",
    "cstdarg": "va_list va_start",
    "cstddef": "byte ptrdiff_t size_t",
    "cstdint": "int8_t int16_t int32_t int64_t uint8_t uint16_t uint32_t uint64_t intptr_t uintptr_t",
    "cstdio": "fclose ferror fflush fgetc fopen fprintf fputc fputs fread fscanf fseek fwrite perror printf putchar "
              "remove rename snprintf sscanf vfprintf vprintf vsnprintf",
    "cstdlib": "abort abs atoi atoll exit free getenv malloc strtod strtol strtoll strtoul system EXIT_FAILURE",
    "cstring": "memchr memcmp memcpy memmove memset strchr strcmp strcpy strcspn strlen strncmp strspn strstr",
    "ctime": "clock clock_t localtime strftime time time_t tm",
    "deque": "deque",
    "exception": "exception",
    "filesystem": "filesystem",
    "fstream": "fstream ifstream ofstream",
    "functional": "function greater",
    "initializer_list": "initializer_list",
    "iostream": "cin cout",
    "iterator": "back_inserter distance istreambuf_iterator begin end size",
    "limits": "numeric_limits",
    "map": "map",
    "memory": "make_shared make_unique shared_ptr unique_ptr",
    "mutex": "lock_guard mutex unique_lock",
    "new": "bad_alloc nothrow nothrow_t",
    "numeric": "accumulate iota",
    "optional": "nullopt optional",
    "queue": "priority_queue",
    "random": "discrete_distribution mt19937 mt19937_64 uniform_int_distribution uniform_real_distribution",
    "regex": "regex regex_match regex_replace regex_search smatch sregex_iterator",
    "set": "set multiset",
    "span": "span",
    "sstream": "istringstream ostringstream stringstream",
    "stdexcept": "length_error",
    "string": "string to_string stoi stol stoull getline",
    "string_view": "string_view",
    "system_error": "error_code errc system_error",
    "thread": "jthread this_thread thread",
    "tuple": "tuple tie",
    "type_traits": "is_trivially_destructible_v is_same_v",
    "unordered_map": "unordered_map",
    "utility": "exchange make_pair move pair swap",
    "vector": "vector",
}
# Headers of types.
OF_TYPES = set("array atomic bit chrono cstdint cstddef filesystem functional initializer_list map memory optional random set "
               "span string string_view utility vector".split())
# Names that every header of containers gives as well, or that come with what they are used on.
NEED_NO_HEADER = set("begin end size move swap pair size_t ptrdiff_t".split())
# Names that stand without std:: before them.
PLAIN = set(STANDARD["cinttypes"].split() + STANDARD["climits"].split() + STANDARD["cstdint"].split() +
            ["va_list", "va_start", "EXIT_FAILURE"])
# Also used without a name of the table: size_t, operators, literals.
ALSO = {"cstddef": r"\bsize_t\b", "string": r"\"s\b", "csignal": r"\bSIG", "cstring": r"\bstrnlen\b", "new": r"\bnew \(|\boperator new",
        "cstdio": r"\b(FILE|EOF|SEEK_\w+|stdout|stderr|stdin)\b", "cmath": r"\bM_\w+",
        "ctime": r"\btimespec\b", "cstdarg": r"\bva_", "cerrno": r"\berrno\b", "utility": r"\bstd::(move|swap|pair)\b",
        "iterator": r"\bstd::(begin|end|size)\b", "cinttypes": r"\b(PRI|SCN)[diouxX]\w+"}
WORDS_OF = {header: set(names.split()) for header, names in STANDARD.items()}

COMMENT_OR_TEXT = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])+\'', re.S)
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.M)


class File:
    def __init__(self, path):
        with open(path, encoding="utf-8") as source:
            text = source.read()
        self.standard = set()
        self.own = []
        self.first = (INCLUDE.search(text) or [""])[0].split('"')[1:2]
        for kind, name in INCLUDE.findall(text):
            if kind == "<":
                self.standard.add(name)
            else:
                self.own.append(name)
        code = INCLUDE.sub("", text)
        self.code = COMMENT_OR_TEXT.sub(lambda m: " " if m.group().startswith("/") else '""', code)
        # Literals like "text"s stay to be seen.
        self.words = set(re.findall(r"\w+", self.code))
        self.std = set(re.findall(r"\bstd::(\w+)", self.code)) | (self.words & PLAIN)


def declared(file):
    """Names that the header gives: whatever stands where a declaration has its name, members too."""
    code = file.code
    while True:
        shorter = re.sub(r"\([^()]*\)", "\x01", code)
        if shorter == code:
            break
        code = shorter
    names = set(re.findall(r"(\w+)\s*(?=[\x01={};,\[:])", code)) | set(re.findall(r"#\s*define\s+(\w+)", code))
    return {name for name in names if not name.isdigit()}


def with_types(path, files, seen=None):
    """Headers of types that come with a header of the project."""
    seen = set() if seen is None else seen
    if path in seen or path not in files:
        return set()
    seen.add(path)
    found = files[path].standard & OF_TYPES
    for included in files[path].own:
        found |= with_types(included, files, seen)
    return found


def check(path, file, files):
    stem, extension = os.path.splitext(path)
    header = files.get(stem + ".h") if extension == ".cpp" else None
    there = file.standard | (header.standard if header else set())
    for included in file.own + (header.own if header else []):
        if included in files:
            there |= with_types(included, files)
    if header and file.first != [stem + ".h"]:
        yield 'does not include "%s.h" first' % stem
    for name in sorted(file.std - NEED_NO_HEADER):
        giving = [h for h, words in WORDS_OF.items() if name in words]
        if giving and not there.intersection(giving):
            yield "needs <%s> for %s" % ("> or <".join(giving), name)
    for included in sorted(file.standard & WORDS_OF.keys()):
        if not file.std & WORDS_OF[included] and not re.search(ALSO.get(included, "(?!)"), file.code):
            yield "names nothing of <%s>" % included
    for included in file.own:
        if included != stem + ".h" and included in files and not declared(files[included]) & file.words:
            yield 'names nothing of "%s"' % included


def main():
    os.chdir(sys.argv[1])
    files = {}
    for top in FOLDERS:
        for folder, _, names in os.walk(top):
            for name in names:
                if name.endswith((".h", ".cpp")):
                    path = os.path.join(folder, name)
                    files[path] = File(path)
    if sys.argv[2:] == ["--alone"]:
        print("\n".join(path for path in sorted(files) if path.endswith(".h") and path[:-1] + "cpp" not in files))
        return 0
    complaints = ["%s: %s" % (path, complaint)
                  for path, file in sorted(files.items()) for complaint in check(path, file, files)]
    print("\n".join(complaints))
    print("%d files, %d complaints" % (len(files), len(complaints)))
    return 1 if complaints or not files else 0


if __name__ == "__main__":
    sys.exit(main())
