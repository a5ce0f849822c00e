// Text in columns.
#pragma once

#include <string>
#include <vector>

namespace headset {

class Table {
  public:
    void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
    bool is_empty() const { return rows_.empty(); }

    /// One line per row, indented, each column as wide as its widest text.
    std::string to_string() const;

  private:
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace headset
