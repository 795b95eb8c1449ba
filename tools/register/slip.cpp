#include "slip.h"

#include <algorithm>
#include <ostream>
#include <string_view>
#include <vector>

namespace reg {
namespace {

constexpr size_t kColumns = 24;

bool Continues(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

size_t Columns(std::string_view text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return !Continues(byte); }));
}

// The bytes of the first `columns` characters.
size_t BytesOf(std::string_view text, size_t columns) {
  size_t at = 0;
  for (; at < text.size(); ++at) {
    if (Continues(text[at])) continue;
    if (columns == 0) break;
    --columns;
  }
  return at;
}

std::string Printable(std::string_view text) {
  std::string clean(text);
  for (char &byte : clean) {
    if (static_cast<unsigned char>(byte) < 32 || byte == 127) byte = '?';
  }
  return clean;
}

}  // namespace

void DrawSlip(std::ostream &out, const std::string &utf8_text) {
  std::vector<std::string> lines;
  std::string_view rest = utf8_text;
  while (!rest.empty()) {
    const size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    do {
      const size_t bytes = BytesOf(line, kColumns);
      lines.push_back(Printable(line.substr(0, bytes)));
      line.remove_prefix(bytes);
    } while (!line.empty());
    if (end == std::string_view::npos) break;
    rest.remove_prefix(end + 1);
  }
  const auto edge = [&](const char *left, const char *middle, const char *right) {
    out << "    " << left;
    for (size_t i = 0; i < kColumns + 2; ++i) out << middle;
    out << right << '\n';
  };
  edge("┌", "─", "┐");
  for (const std::string &line : lines) {
    out << "    │ " << line << std::string(kColumns - std::min(kColumns, Columns(line)), ' ') << " │\n";
  }
  edge("└", "╌", "┘");
}

}  // namespace reg
