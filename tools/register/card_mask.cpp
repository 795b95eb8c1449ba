#include "card_mask.h"

#include <algorithm>
#include <cctype>
#include <functional>

namespace reg {
namespace {

constexpr size_t kShortest = 4;     // a shorter number is also that of anything else
constexpr size_t kTelling = 8;      // of this length it is a card's wherever it stands
constexpr size_t kMostShown = 100;  // in one exchange
constexpr size_t kMostKnown = 1000000;

bool IsWordByte(char byte) {
  return std::isalnum(static_cast<unsigned char>(byte)) != 0;
}

std::string Masked(std::string_view card) {
  const size_t shown = card.size() >= kTelling && std::all_of(card.begin(), card.end(), IsWordByte) ? 4 : 0;
  std::string text;
  for (const char byte : card.substr(0, card.size() - shown)) {
    if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80) text += '*';
  }
  return text.append(card.substr(card.size() - shown));
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool NamesCard(std::string_view name) {
  std::string lower(name);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char byte) { return static_cast<char>(std::tolower(static_cast<unsigned char>(byte))); });
  return lower.find("card") != std::string::npos;
}

size_t SkipBlanks(std::string_view text, size_t at) {
  while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at])) != 0) ++at;
  return at;
}

// The value that stands at `begin`: of a text without its quotes, whose end may be missing; or a number.
std::string_view ScalarAt(std::string_view text, size_t begin) {
  size_t end = begin;
  if (begin < text.size() && text[begin] == '"') {
    for (end = ++begin; end < text.size() && text[end] != '"'; ++end) {
      if (text[end] == '\\') ++end;
    }
  } else {
    while (end < text.size() && (IsWordByte(text[end]) || text[end] == '.' || text[end] == '-')) ++end;
  }
  return text.substr(begin, std::min(end, text.size()) - begin);
}

// Names and values, whatever stands around them.
void ForEachCard(std::string_view text, const std::function<void(std::string_view card)> &take) {
  size_t open = std::string_view::npos;  // the last quote but one
  size_t quote = text.find('"');
  while (quote != std::string_view::npos) {
    const size_t colon = SkipBlanks(text, quote + 1);
    if (open != std::string_view::npos && colon < text.size() && text[colon] == ':' &&
        NamesCard(text.substr(open + 1, std::min<size_t>(quote - open - 1, 100)))) {
      const std::string_view value = ScalarAt(text, SkipBlanks(text, colon + 1));
      if (std::any_of(value.begin(), value.end(), [](char byte) { return byte >= '0' && byte <= '9'; }) ||
          text.substr(open + 1, quote - open - 1) == "cardNum") {
        take(value);
      }
    }
    open = quote;
    quote = text.find('"', quote + 1);
  }
}

// "\u0031" is 1. What is no such escape stays.
std::string Unescaped(std::string_view text) {
  std::string plain;
  for (size_t at = 0; at < text.size(); ++at) {
    const std::string digits(text.substr(std::min(text.size(), at + 2), 4));
    if (text[at] == '\\' && text.substr(at, 4) == "\\u00" && digits.size() == 4 &&
        std::all_of(digits.begin(), digits.end(),
                    [](unsigned char byte) { return std::isxdigit(byte) != 0; })) {
      plain += static_cast<char>(std::stoi(digits, nullptr, 16));
      at += 5;
    } else {
      plain += text[at];
    }
  }
  return plain;
}

void ReplaceAll(std::string &text, const std::string &old_text, const std::string &new_text) {
  std::string result;
  size_t at = 0;
  for (size_t found; (found = text.find(old_text, at)) != std::string::npos; at = found + old_text.size()) {
    result.append(text, at, found - at).append(new_text);
  }
  if (at != 0) text = result.append(text, at, std::string::npos);
}

}  // namespace

void CardMask::Add(std::string_view card) {
  if (card.size() < kShortest) return;
  if (cards_.size() < kMostShown) cards_.emplace_back(card);
  if (card.size() >= kTelling && known_.size() < kMostKnown) known_.emplace(card);
}

void CardMask::Learn(const std::vector<std::string> &cards, const std::vector<std::string_view> &documents) {
  cards_.clear();
  for (const std::string &card : cards) Add(card);
  for (const std::string_view document : documents) {
    ForEachCard(document, [this](std::string_view card) {
      Add(card);
      if (card.find('\\') != std::string_view::npos) Add(Unescaped(card));
    });
  }
  torn_.clear();
  for (const std::string_view document : documents) {
    for (const std::string &card : cards_) {
      for (size_t length = card.size() - 1; length >= kShortest; --length) {
        if (EndsWith(document, std::string_view(card).substr(0, length))) {
          torn_.push_back(card.substr(0, length));
          break;
        }
      }
    }
  }
  std::sort(cards_.begin(), cards_.end(), [](const std::string &a, const std::string &b) {
    return a.size() != b.size() ? a.size() > b.size() : a < b;
  });
  cards_.erase(std::unique(cards_.begin(), cards_.end()), cards_.end());
}

std::string CardMask::Hide(std::string text) const {
  if (shows_) return text;
  // Numbers that stand in members of cards.
  std::string hidden;
  size_t at = 0;
  ForEachCard(text, [&](std::string_view card) {
    const auto begin = static_cast<size_t>(card.data() - text.data());
    if (begin < at) return;
    hidden.append(text, at, begin - at).append(Masked(card));
    at = begin + card.size();
  });
  text = hidden.append(text, at, std::string::npos);
  for (const std::string &card : cards_) ReplaceAll(text, card, Masked(card));
  for (const std::string &piece : torn_) ReplaceAll(text, piece, std::string(piece.size(), '*'));
  // Numbers learnt from other exchanges, as whole words.
  for (size_t begin = 0; begin < text.size();) {
    size_t end = begin;
    while (end < text.size() && IsWordByte(text[end])) ++end;
    if (end - begin >= kTelling) {
      const std::string word = text.substr(begin, end - begin);
      if (known_.count(word) != 0) text.replace(begin, word.size(), Masked(word));
    }
    begin = end + 1;
  }
  return text;
}

}  // namespace reg
