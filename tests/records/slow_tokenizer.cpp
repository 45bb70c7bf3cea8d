#include "slow_tokenizer.h"

#include <cctype>

#include "records/fen.h"

namespace {

enum State {
    START,
    NUMBER,
    AFTER_FIRST,
    AFTER_SEPARATOR,
    SECOND,
    AFTER_SECOND,
    PATH_SEPARATOR,
    COMMENT,
    EMBEDDED,
    JUNK,
    TAG_OPEN,
    TAG_KEY,
    TAG_VALUE,
    TAG_CLOSE
};

bool space(int c) { return c == 9 || c == 10 || c == 13 || c == 32; }
bool digit(int c) { return c >= '0' && c <= '9'; }
bool separates(int c) { return c == '-' || c == 'x' || c == 'X'; }

std::string trimmed(std::string text) {
    while (!text.empty() && space(text.back())) text.pop_back();
    return text;
}

struct Machine {
    const std::string& text;
    size_t at;
    size_t start;
    State state = START;
    SlowToken token = {};
    std::string stack = {};
    size_t remembered = std::string::npos;
    size_t key_start = 0, value_start = 0;
    int separator = 0;
    std::vector<int> squares = {};
    bool done = false;

    int c() const { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0; }
    bool here(size_t place, const char* word) const {
        return text.compare(place, std::string(word).size(), word) == 0;
    }
    void finish(PdnTokenKind kind) {
        token.kind = kind;
        done = true;
    }
    void comment() {
        token.text = text.substr(start, at - start);
        finish(PDN_COMMENT);
    }
    void move() {
        if (remembered != std::string::npos) at = remembered;
        if (token.from == 0 && (token.to == 1 || token.to == 2)) return finish(PDN_BLACK_WIN);
        if (token.to == 0 && (token.from == 1 || token.from == 2)) return finish(PDN_WHITE_WIN);
        token.is_capture = std::tolower(separator) == 'x';
        if (squares.size() >= 3) token.path = squares;
        finish(PDN_MOVE);
    }
    void step();
    void start_step();
    void number_step();
    void square_step();
    void embedded_step();
    void tag_step();
    void end();
};

void Machine::start_step() {
    if (digit(c())) {
        token.from = c() - '0';
        state = NUMBER;
    } else if (c() == '{' || c() == '(') {
        stack.push_back(text[at]);
        state = COMMENT;
    } else if (c() == '[') {
        state = TAG_OPEN;
    } else if (c() == '*') {
        ++at;
        return finish(PDN_UNKNOWN);
    } else if (here(at, "/FEN")) {
        state = EMBEDDED;
        return;
    } else {
        state = JUNK;
    }
    ++at;
}

void Machine::number_step() {
    if (digit(c())) {
        token.from = (token.from * 10 + c() - '0') % 256;
        ++at;
    } else if (c() == '/' && here(at - 1, "1/2-1/2")) {
        at += 6;
        finish(PDN_DRAW);
    } else if (c() == '.') {
        ++at;
        finish(PDN_MOVE_NUMBER);
    } else {
        squares.push_back(token.from);
        state = AFTER_FIRST;
    }
}

void Machine::square_step() {
    if (state == SECOND) {
        if (digit(c())) {
            token.to = (token.to * 10 + c() - '0') % 256;
            ++at;
            return;
        }
        squares.push_back(token.to);
        if (!separates(c()) && !space(c())) return move();
        state = separates(c()) ? PATH_SEPARATOR : AFTER_SECOND;
        remembered = at++;
        return;
    }
    if (space(c())) {
        ++at;
    } else if (state == AFTER_SECOND && separates(c())) {
        state = PATH_SEPARATOR;
        ++at;
    } else if (state == PATH_SEPARATOR && digit(c())) {
        remembered = std::string::npos;
        token.to = c() - '0';
        state = SECOND;
        ++at;
    } else {
        move();
    }
}

void Machine::embedded_step() {
    state = JUNK;
    const size_t quote = text.find('"', at);
    const size_t slash = quote == std::string::npos ? quote : text.find('/', quote);
    const size_t closing = quote == std::string::npos ? quote : text.find('"', quote + 1);
    Position position;
    int side = 0;
    if (slash == std::string::npos || quote - at > 200 || slash - quote > 200 ||
        closing == std::string::npos || closing - quote - 1 > 200 ||
        fen_to_position(text.substr(quote, slash - quote).c_str(), position, side) != 0) {
        ++at;
        return;
    }
    token.text = text.substr(quote + 1, closing - quote - 1);
    at = slash + 1;
    finish(PDN_EMBEDDED_FEN);
}

void Machine::tag_step() {
    if (state == TAG_OPEN) {
        if (!space(c())) {
            key_start = at;
            state = TAG_KEY;
        }
    } else if (state == TAG_KEY && c() == '"') {
        token.key = trimmed(text.substr(key_start, at - key_start));
        value_start = at;
        state = TAG_VALUE;
    } else if (state == TAG_VALUE && c() == '"') {
        token.value = text.substr(value_start, at + 1 - value_start);
        state = TAG_CLOSE;
    } else if (state == TAG_CLOSE && c() == ']') {
        finish(PDN_HEADER);
    }
    ++at;
}

void Machine::step() {
    switch (state) {
        case START:
            return start_step();
        case NUMBER:
            return number_step();
        case AFTER_FIRST:
            if (separates(c())) {
                separator = c();
                state = AFTER_SEPARATOR;
            } else if (!space(c())) {
                state = JUNK;
                return;
            }
            break;
        case AFTER_SEPARATOR:
            if (digit(c())) {
                token.to = c() - '0';
                state = SECOND;
            } else if (!space(c())) {
                state = JUNK;
                return;
            }
            break;
        case SECOND:
        case AFTER_SECOND:
        case PATH_SEPARATOR:
            return square_step();
        case COMMENT:
            if (c() == (stack.back() == '{' ? '}' : ')')) {
                stack.pop_back();
                if (stack.empty()) {
                    ++at;
                    return comment();
                }
            } else if ((c() == '{' || c() == '(') && stack.size() < 50) {
                stack.push_back(text[at]);
            }
            break;
        case EMBEDDED:
            return embedded_step();
        case JUNK:
            if (digit(c()) || c() == '(' || c() == '*' || c() == '[' || c() == '{' || here(at, "/FEN"))
                return comment();
            break;
        default:
            return tag_step();
    }
    ++at;
}

void Machine::end() {
    if (state == SECOND) squares.push_back(token.to);
    if (state == SECOND || state == AFTER_SECOND || state == PATH_SEPARATOR) return move();
    token.key.clear();
    token.value.clear();
    token.text = trimmed(text.substr(start));
    finish(PDN_COMMENT);
}

}  // namespace

SlowToken slow_next_token(const std::string& text, size_t& cursor) {
    while (cursor < text.size() && space(text[cursor])) ++cursor;
    if (cursor == text.size()) return {};
    Machine machine{text, cursor, cursor};
    while (!machine.done && machine.at < text.size()) machine.step();
    if (!machine.done) machine.end();
    cursor = machine.at;
    return machine.token;
}
