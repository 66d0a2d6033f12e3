#pragma once
// The tour: a guided walk through the library, one stop per capability. Each stop lives in
// tour/<Area>Tour.cpp and registers itself with CORDEL_TOUR_STOP; the tour runs them in order.

#include <Cordel/common/String.h>

namespace CordelTool {

struct TourStop {
    int order; // stops run from the lowest order up
    char const* title;
    void (*run)();
};

struct TourRegistration {
    explicit TourRegistration(TourStop const& stop);
};

// Prints one line of the tour, indented under its stop's title.
void TourSay(Cordel::String const& line);

} // namespace CordelTool

#define CORDEL_TOUR_STOP(order, title, function) \
    static ::CordelTool::TourRegistration tourRegistration##order({order, title, function})
