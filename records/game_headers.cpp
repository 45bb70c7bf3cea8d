#include "records/game_headers.h"

#include <strings.h>

#include <cstring>
#include <string>

#include "base/utf8.h"

namespace {

void copy_without_quotes(std::array<char, HEADER_TEXT_SIZE>& out, std::string value) {
    std::erase(value, '"');
    copy_utf8(value, out.data(), out.size());
}

bool is_one_of(const char* value, const char* first, const char* second) {
    return std::strcmp(value, first) == 0 || std::strcmp(value, second) == 0;
}

}  // namespace

const char* result_string(int32_t code) {
    switch (code) {
        case RESULT_WHITE_WINS:
            return "2-0";
        case RESULT_BLACK_WINS:
            return "0-2";
        case RESULT_DRAW:
            return "1-1";
        default:
            return "*";
    }
}

int32_t pdn_result_code(const char* quoted_value) {
    if (is_one_of(quoted_value, "\"1/2-1/2\"", "\"1-1\"")) return RESULT_DRAW;
    if (is_one_of(quoted_value, "\"1-0\"", "\"2-0\"")) return RESULT_WHITE_WINS;
    if (is_one_of(quoted_value, "\"0-1\"", "\"0-2\"")) return RESULT_BLACK_WINS;
    return RESULT_UNKNOWN;
}

bool set_game_header(GameHeaders& headers, const char* key, const char* quoted_value) {
    if (strcasecmp(key, "Event") == 0)
        copy_without_quotes(headers.event, quoted_value);
    else if (strcasecmp(key, "Date") == 0)
        copy_without_quotes(headers.date, quoted_value);
    else if (strcasecmp(key, "White") == 0)
        copy_without_quotes(headers.white, quoted_value);
    else if (strcasecmp(key, "Black") == 0)
        copy_without_quotes(headers.black, quoted_value);
    else if (strcasecmp(key, "Result") == 0)
        headers.result = pdn_result_code(quoted_value);
    else
        return false;
    return true;
}
