#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

namespace test_support {

/// How many descriptors this process has open.
inline auto openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// Fails the test if more are open at its end than at its beginning.
class DescriptorsAsBefore {
public:
    DescriptorsAsBefore() = default;
    ~DescriptorsAsBefore() { EXPECT_EQ(openDescriptors(), m_before); }
    DescriptorsAsBefore(const DescriptorsAsBefore&) = delete;
    DescriptorsAsBefore& operator=(const DescriptorsAsBefore&) = delete;

private:
    decltype(openDescriptors()) m_before = openDescriptors();
};

} // namespace test_support
