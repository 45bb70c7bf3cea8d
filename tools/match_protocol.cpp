#include "tools/match_protocol.h"

#include <cmath>
#include <sstream>

namespace {

constexpr size_t MAX_POSITIONS = 1000;

template <typename Sets>
void write_sets(std::ostream& out, const Sets& sets) {
    out << std::hex << ' ' << sets.black << ' ' << sets.white << ' ' << sets.king << std::dec;
}

bool at_end(std::istream& in) { return (in >> std::ws).eof(); }

}  // namespace

std::string go_line(const Position& position) {
    std::vector<const Position*> line{&position};
    for (int ply = 0; ply < position.reversible_plies; ++ply) line.push_back(line.back()->previous);
    std::ostringstream out;
    out << "go " << position.side;
    for (size_t i = line.size(); i-- > 0;) write_sets(out, *line[i]);
    return out.str();
}

bool read_go_line(const std::string& line, std::vector<Position>& positions) {
    std::istringstream in(line);
    std::string word;
    int side = -1;
    if (!(in >> word >> side) || word != "go" || side < BLACK || side > WHITE) return false;
    positions.clear();
    in >> std::hex;
    while (!at_end(in)) {
        Position position;
        if (!(in >> position.black >> position.white >> position.king)) return false;
        if (!is_legal_setup(position) || positions.size() == MAX_POSITIONS) return false;
        positions.push_back(position);
    }
    for (size_t i = 0; i < positions.size(); ++i) {
        positions[i].side = side ^ static_cast<int>((positions.size() - 1 - i) & 1);
        positions[i].reversible_plies = static_cast<int32_t>(i);
        positions[i].previous = i > 0 ? &positions[i - 1] : nullptr;
    }
    return !positions.empty();
}

std::string move_line(const PlayerAnswer& answer) {
    std::ostringstream out;
    out << "move";
    write_sets(out, answer.move);
    out << ' ' << answer.score << ' ' << answer.depth << ' ' << answer.nodes << ' '
        << std::llround(answer.seconds * 1e6);
    return out.str();
}

bool read_move_line(const std::string& line, PlayerAnswer& answer) {
    std::istringstream in(line);
    std::string word;
    PlayerAnswer read{};
    int64_t microseconds = 0;
    in >> word >> std::hex >> read.move.black >> read.move.white >> read.move.king >> std::dec;
    in >> read.score >> read.depth >> read.nodes >> microseconds;
    if (!in || word != "move" || !at_end(in)) return false;
    read.seconds = static_cast<double>(microseconds) / 1e6;
    answer = read;
    return true;
}
