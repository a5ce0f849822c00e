#include "tests/docs/markdown_table.h"

#include <iostream>

namespace docs {
namespace {

void print_row(const Cells& cells) {
    std::cout << '|';
    for (const std::string& cell : cells) {
        std::cout << ' ' << cell << " |";
    }
    std::cout << '\n';
}

}  // namespace

void MarkdownTable::print() const {
    std::cout << "<!-- table: " << name_ << " -->\n\n";
    print_row(rows_.front());
    print_row(Cells(rows_.front().size(), "---"));
    for (std::size_t i = 1; i < rows_.size(); ++i) {
        print_row(rows_[i]);
    }
    std::cout << "\n<!-- end -->\n";
}

Cells with(Cells cells, const Cells& more) {
    cells.insert(cells.end(), more.begin(), more.end());
    return cells;
}

std::string joined(const Cells& texts, const char* separator) {
    std::string text;
    for (const std::string& one : texts) {
        text += (text.empty() ? "" : separator) + one;
    }
    return text.empty() ? nothing : text;
}

}  // namespace docs
