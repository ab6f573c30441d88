// convert.h - joining two layouts by the library's conversions: one call when
// the library has it, otherwise the cheapest chain of calls, mostly through
// 8-bit RGB, which --verbose spells out.
#pragma once

#include <string>
#include <vector>

#include "frame.h"

namespace kelcctool {

struct Step;  // one call (or a short fixed group of calls) from a layout to another

struct Route {
    std::vector<const Step*> steps;
    int alignX = 1, alignY = 1;  // what every layout on the way needs of the size
    std::string describe() const;
};

// The route from one layout to another; throws a Failure when none exists.
Route findRoute(Layout from, Layout to);

// Runs the route on a frame; a route of no steps gives the frame back.
Frame runRoute(const Route& route, Frame frame);

// Copies the top-left width x height of a frame (library copies, plane by plane).
Frame cropFrame(const Frame& frame, int width, int height);

// Checks the frame's size against what the route needs: with `crop`, cuts it
// down (saying so under --verbose); without, throws a Failure saying what the
// size would be rounded to.
Frame fitFrame(Frame frame, const Route& route, bool crop);

}  // namespace kelcctool
