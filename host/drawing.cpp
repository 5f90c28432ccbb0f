#include "host/drawing.h"

#include <algorithm>

namespace host {

ftxui::Screen draw(const ftxui::Element& element, int maxWidth) {
    element->ComputeRequirement();
    const auto size = element->requirement();
    auto screen = ftxui::Screen::Create(ftxui::Dimension::Fixed(std::min(size.min_x, maxWidth)),
                                        ftxui::Dimension::Fixed(size.min_y));
    ftxui::Render(screen, element);
    return screen;
}

} // namespace host
