// Tables for the documentation, as tests/docs/tables.py looks for them: in Markdown, between marker lines.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace docs {

using Cells = std::vector<std::string>;

/// What a cell says where there is nothing.
inline constexpr const char* nothing = "–";

class MarkdownTable {
  public:
    MarkdownTable(std::string name, Cells header) : name_(std::move(name)), rows_{std::move(header)} {}

    void add(Cells row) { rows_.push_back(std::move(row)); }

    /// To standard output.
    void print() const;

  private:
    std::string name_;
    std::vector<Cells> rows_;  ///< the header first
};

/// Text of the code, in Markdown.
inline std::string code(const std::string& text) {
    return "`" + text + "`";
}

/// The cells of one row after those of another.
Cells with(Cells cells, const Cells& more);

/// The texts with a separator between them; `nothing` for none.
std::string joined(const Cells& texts, const char* separator);

}  // namespace docs
