#pragma once

#include <ftxui/dom/elements.hpp>
#include <ftxui/screen/screen.hpp>

#include <limits>

namespace host {

/// Draws the element at its natural size, or cut at `maxWidth` columns.
ftxui::Screen draw(const ftxui::Element& element, int maxWidth = std::numeric_limits<int>::max());

} // namespace host
