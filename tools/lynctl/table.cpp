// SPDX-License-Identifier: Apache-2.0
#include "table.h"

#include <algorithm>
#include <cstddef>

#include "text.h"

namespace lynctl {

namespace {

struct Frame {
    const char* line;
    const char* bar;
    const char* top[3];
    const char* middle[3];
    const char* bottom[3];
};

constexpr Frame kUnicodeFrame{"─", "│", {"┌", "┬", "┐"}, {"├", "┼", "┤"}, {"└", "┴", "┘"}};
constexpr Frame kAsciiFrame{"-", "|", {"+", "+", "+"}, {"+", "+", "+"}, {"+", "+", "+"}};

std::string Rule(const std::vector<int>& widths, const Frame& frame, const char* const (&corners)[3],
                 const Look& look)
{
    std::string out = corners[0];
    for (std::size_t i = 0; i < widths.size(); ++i) {
        for (int n = 0; n < widths[i] + 2; ++n) {
            out += frame.line;
        }
        out += corners[i + 1 < widths.size() ? 1 : 2];
    }
    return Paint(out, Style::dim, look) + "\n";
}

std::string Line(const std::vector<Cell>& cells, const std::vector<Column>& columns,
                 const std::vector<int>& widths, const Frame& frame, const Look& look)
{
    const std::string bar = Paint(frame.bar, Style::dim, look);
    std::string out = bar;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string text = Fit(cells[i].text, widths[i], look.unicode);
        out += ' ';
        out += Paint(Pad(text, widths[i], columns[i].alignRight), cells[i].style, look);
        out += ' ';
        out += bar;
    }
    return out + "\n";
}

}  // namespace

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

void Table::AddRow(std::vector<Cell> cells)
{
    cells.resize(m_columns.size());
    m_rows.push_back(std::move(cells));
}

std::vector<int> Table::Widths(const std::vector<std::vector<Cell>>& rows) const
{
    std::vector<int> widths;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        int width = 0;
        for (const std::vector<Cell>& row : rows) {
            width = std::max(width, Width(row[i].text));
        }
        if (m_columns[i].maxWidth > 0) {
            width = std::min(width, m_columns[i].maxWidth);
        }
        widths.push_back(std::max(width, Width(m_columns[i].title)));
    }
    return widths;
}

/// Takes a column from the widest that can still give one, until the table fits.
void Table::GiveWay(std::vector<int>& widths, int limit) const
{
    int total = 1;
    for (const int width : widths) {
        total += width + 3;
    }
    for (; total > limit; --total) {
        int* widest = nullptr;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const bool gives = m_columns[i].minWidth > 0 && widths[i] > m_columns[i].minWidth;
            if (gives && (!widest || widths[i] > *widest)) {
                widest = &widths[i];
            }
        }
        if (!widest) {
            return;
        }
        --*widest;
    }
}

std::string Table::Render(const Look& look, int maxRows) const
{
    std::vector<std::vector<Cell>> rows = m_rows;
    for (std::vector<Cell>& row : rows) {
        for (Cell& cell : row) {
            cell.text = Printable(cell.text, look.unicode);
        }
    }
    std::vector<int> widths = Widths(rows);
    if (look.width > 0) {
        GiveWay(widths, look.width);
    }
    const Frame& frame = look.unicode ? kUnicodeFrame : kAsciiFrame;
    const bool cut = maxRows > 0 && rows.size() > static_cast<std::size_t>(maxRows);
    const std::size_t shown = cut ? static_cast<std::size_t>(maxRows) : rows.size();

    std::vector<Cell> titles;
    for (const Column& column : m_columns) {
        titles.push_back({column.title, Style::strong});
    }
    std::string out = Rule(widths, frame, frame.top, look) + Line(titles, m_columns, widths, frame, look) +
                      Rule(widths, frame, frame.middle, look);
    for (std::size_t i = 0; i < shown; ++i) {
        out += Line(rows[i], m_columns, widths, frame, look);
    }
    out += Rule(widths, frame, frame.bottom, look);
    if (cut) {
        out += Paint("  and " + std::to_string(rows.size() - shown) + " more", Style::dim, look) + "\n";
    }
    return out;
}

}  // namespace lynctl
