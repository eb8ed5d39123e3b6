// SPDX-License-Identifier: Apache-2.0
//
// What came of the visits, for the tables at the end.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "holding/Exceptions.h"
#include "holding/Point.h"

namespace lyn::test {

/// Of things done while a thread was held.
struct Came {
    int atOnce = 0;
    std::array<int, kExceptions> waited{};  ///< by the exception that allows it

    int Waited() const;
};

class Tally {
public:
    void Visited(const Point& point);
    void Failed(const Point& point);
    void CameBack(const Point& point, const std::string& what);
    void Waited(const Point& point, const std::string& what, std::size_t exception);

    int Points() const { return m_points; }
    int Failures() const { return m_failures; }

    /// Points, and what came back and what waited, by service and step.
    void PrintSteps() const;
    /// What came back and what waited, by what was done.
    void PrintWorks() const;
    /// How often each exception was needed.
    void PrintExceptions() const;
    /// Exceptions that nobody needed.
    int UnneededExceptions() const;

private:
    struct Row {
        std::string service;
        std::string step;
        bool isOnLoop = false;
        int points = 0;
        int visits = 0;
        int failures = 0;
        Came came;
    };

    Row& RowOf(const Point& point);

    std::vector<Row> m_rows;
    std::map<std::string, Came> m_works;
    std::array<int, kExceptions> m_needed{};
    std::string m_lastPoint;
    int m_points = 0;
    int m_failures = 0;
};

}  // namespace lyn::test
