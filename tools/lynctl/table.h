// SPDX-License-Identifier: Apache-2.0
//
// A table for people: a frame, a heading, aligned columns that give way to the terminal's width.
#pragma once

#include <string>
#include <vector>

#include "terminal.h"

namespace lynctl {

struct Column {
    std::string title;
    int maxWidth = 0;  ///< longer cells are cut; 0 for no limit
    int minWidth = 0;  ///< how far the column gives way when the terminal is narrow; 0: not at all
    bool alignRight = false;
};

struct Cell {
    std::string text;  ///< any text; it is made printable here
    Style style = Style::plain;
};

class Table {
public:
    explicit Table(std::vector<Column> columns);

    /// Adds a row; cells beyond the columns are left out, missing ones are empty.
    void AddRow(std::vector<Cell> cells);
    /// The table, each line ended by a newline; at most `maxRows` rows, the others counted in a last line.
    std::string Render(const Look& look, int maxRows = 0) const;

private:
    std::vector<int> Widths(const std::vector<std::vector<Cell>>& rows) const;
    void GiveWay(std::vector<int>& widths, int limit) const;

    std::vector<Column> m_columns;
    std::vector<std::vector<Cell>> m_rows;
};

}  // namespace lynctl
