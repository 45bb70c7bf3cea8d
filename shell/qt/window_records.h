// The places of windows between the settings, the screens and the frame. Records come from a file and can
// hold anything; what is shown is always in reach of the user. Needs no window.
#pragma once

#include <QList>
#include <QRect>
#include <QSize>

#include "control/settings.h"

// What the frame's record has as `visible`: shown in its place, or over the whole screen with its place kept
// for the time when it no longer is.
constexpr int32_t FRAME_SHOWN = 1;
constexpr int32_t FRAME_MAXIMIZED = 3;

// What the desktop puts around a window, before it is known.
constexpr QSize ASSUMED_DECORATION(12, 40);

// A record's place and size with numbers that a window can have. DEFAULT_PLACE becomes 0.
QRect place_of_record(const WindowRecord& record);

// The system chooses where the window goes.
bool has_default_place(const WindowRecord& record);

// The record's place and size become the rectangle's; whether it is visible stays.
void store_place(WindowRecord& record, const QRect& place);

// The area that has most of the place, or is nearest to it; there must be one.
const QRect& nearest_area(const QRect& place, const QList<QRect>& areas);

// The nearest place for a window on one of the areas, which are screens without their panels, or the frame's
// inside: it fits, and enough of its upper edge is in view to take hold of it. A window that is well placed
// stays as it is. With no area the rectangle itself.
QRect place_in_view(const QRect& place, const QList<QRect>& areas);
