// SPDX-License-Identifier: Apache-2.0
#include "holding/Tally.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

namespace lyn::test {

int Came::Waited() const
{
    return std::accumulate(waited.begin(), waited.end(), 0);
}

// Points of a step follow each other, but for a few that a later story has found.
Tally::Row& Tally::RowOf(const Point& point)
{
    const std::string& step = point.HeldStep().name;
    const auto found = std::find_if(m_rows.rbegin(), m_rows.rend(), [&](const Row& row) {
        return row.service == point.service && row.step == step;
    });
    if (found != m_rows.rend()) {
        return *found;
    }
    Row& row = m_rows.emplace_back();
    row.service = point.service;
    row.step = step;
    row.isOnLoop = point.HeldStep().isOnLoop;
    return row;
}

void Tally::Visited(const Point& point)
{
    Row& row = RowOf(point);
    ++row.visits;
    if (point.Name() != m_lastPoint) {
        m_lastPoint = point.Name();
        ++row.points;
        ++m_points;
    }
}

void Tally::Failed(const Point& point)
{
    ++RowOf(point).failures;
    ++m_failures;
}

void Tally::CameBack(const Point& point, const std::string& what)
{
    ++RowOf(point).came.atOnce;
    ++m_works[what].atOnce;
}

void Tally::Waited(const Point& point, const std::string& what, std::size_t exception)
{
    ++RowOf(point).came.waited.at(exception);
    ++m_works[what].waited.at(exception);
    ++m_needed.at(exception);
}

void Tally::PrintSteps() const
{
    std::printf("\n%-10s %-40s %-9s %7s %7s %9s %7s %7s\n", "service", "step", "held", "points", "visits",
                "at once", "waited", "failed");
    Row total;
    for (const Row& row : m_rows) {
        std::printf("%-10s %-40s %-9s %7d %7d %9d %7d %7d\n", row.service.c_str(), row.step.c_str(),
                    row.isOnLoop ? "main loop" : "caller", row.points, row.visits, row.came.atOnce,
                    row.came.Waited(), row.failures);
        total.points += row.points;
        total.visits += row.visits;
        total.failures += row.failures;
        total.came.atOnce += row.came.atOnce;
        total.came.waited[0] += row.came.Waited();
    }
    std::printf("%-10s %-40s %-9s %7d %7d %9d %7d %7d\n", "total", "", "", total.points, total.visits,
                total.came.atOnce, total.came.Waited(), total.failures);
}

void Tally::PrintWorks() const
{
    std::printf("\n%-42s %9s", "done while a thread was held", "at once");
    for (std::size_t i = 0; i < kExceptions; ++i) {
        std::printf("  waited %zu", i + 1);
    }
    std::printf("\n");
    for (const auto& [what, came] : m_works) {
        std::printf("%-42s %9d", what.c_str(), came.atOnce);
        for (const int waited : came.waited) {
            std::printf(" %9d", waited);
        }
        std::printf("\n");
    }
}

void Tally::PrintExceptions() const
{
    std::printf("\n   %-50s %-50s %7s\n", "a thread is held", "what may wait", "waited");
    for (std::size_t i = 0; i < kExceptions; ++i) {
        std::printf("%zu  %-50s %-50s %7d\n", i + 1, s_exceptions.at(i).held, s_exceptions.at(i).waits,
                    m_needed.at(i));
    }
}

int Tally::UnneededExceptions() const
{
    return static_cast<int>(std::count(m_needed.begin(), m_needed.end(), 0));
}

}  // namespace lyn::test
