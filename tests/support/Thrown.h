// SPDX-License-Identifier: Apache-2.0
//
// What a piece of work throws, for tests that care for its exact class and its text.
#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <typeinfo>

namespace lyn::test {

/// what() of the E that `work` throws. Fails the test, and returns "", when it throws nothing, another
/// class or a class derived from E.
template <typename E, typename Work>
std::string ThrownBy(const Work& work)
{
    try {
        work();
    } catch (const std::exception& e) {
        EXPECT_TRUE(typeid(e) == typeid(E)) << "thrown: " << typeid(e).name() << ": " << e.what();
        return typeid(e) == typeid(E) ? e.what() : "";
    }
    ADD_FAILURE() << "nothing was thrown";
    return "";
}

}  // namespace lyn::test
