#include "shell/qt/window_records.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int32_t MAX_COORDINATE = 32767;
constexpr int32_t MIN_SIZE = 40;
constexpr int32_t MAX_SIZE = 16384;

// What of the upper edge must be in view.
constexpr int HOLD_WIDTH = 100;
constexpr int HOLD_HEIGHT = 24;

int64_t area_of(const QRect& rect) { return rect.isEmpty() ? 0 : int64_t{rect.width()} * rect.height(); }

// Of two areas that hold nothing of the window, the nearer one is better.
int64_t nearness(const QRect& place, const QRect& area) {
    if (const int64_t common = area_of(place & area); common > 0) return common;
    const QPoint way = place.center() - area.center();
    return -int64_t{std::abs(way.x())} - int64_t{std::abs(way.y())};
}

bool can_be_held(const QRect& place, const QRect& area) {
    const QRect edge(place.left(), place.top(), place.width(), std::min(HOLD_HEIGHT, place.height()));
    const QRect seen = edge & area;
    return seen.height() == edge.height() && seen.width() >= std::min(HOLD_WIDTH, place.width());
}

}  // namespace

QRect place_of_record(const WindowRecord& record) {
    const auto coordinate = [](int32_t stored) {
        return stored == DEFAULT_PLACE ? 0 : setting_number(stored, -MAX_COORDINATE, MAX_COORDINATE);
    };
    return {coordinate(record.x), coordinate(record.y), setting_number(record.width, MIN_SIZE, MAX_SIZE),
            setting_number(record.height, MIN_SIZE, MAX_SIZE)};
}

bool has_default_place(const WindowRecord& record) {
    return record.x == DEFAULT_PLACE || record.y == DEFAULT_PLACE;
}

void store_place(WindowRecord& record, const QRect& place) {
    record.x = place.x();
    record.y = place.y();
    record.width = place.width();
    record.height = place.height();
}

const QRect& nearest_area(const QRect& place, const QList<QRect>& areas) {
    return *std::max_element(areas.begin(), areas.end(), [&](const QRect& a, const QRect& b) {
        return nearness(place, a) < nearness(place, b);
    });
}

QRect place_in_view(const QRect& place, const QList<QRect>& areas) {
    if (areas.isEmpty()) return place;
    const QRect& area = nearest_area(place, areas);
    QRect fitted(place.topLeft(), place.size().boundedTo(area.size()));
    if (can_be_held(fitted, area) && fitted.size() == place.size()) return fitted;
    const int x = std::clamp(fitted.x(), area.left(), area.right() + 1 - fitted.width());
    const int y = std::clamp(fitted.y(), area.top(), area.bottom() + 1 - fitted.height());
    fitted.moveTo(x, y);
    return fitted;
}
