#include "readers/documents/ObjectParser.h"

#include "readers/documents/CharacterClass.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace searchsystem {

namespace {

using Kind = Object::Kind;

const char *skipRegular(const char *at, const char *end) noexcept {
  while (at != end && CharacterClass::isRegular(*at))
    ++at;
  return at;
}

const char *skipDigits(const char *at, const char *end) noexcept {
  while (at != end && CharacterClass::isDigit(*at))
    ++at;
  return at;
}

const char *skipWhite(const char *at, const char *end) noexcept {
  while (at != end && CharacterClass::isBlank(*at))
    ++at;
  return at;
}

} // namespace

void ObjectParser::reset(std::string_view bytes, Bytes ending) noexcept {
  begin_ = at_ = bytes.data();
  end_ = begin_ + bytes.size();
  isWhole_ = ending == Bytes::all;
}

void ObjectParser::setPosition(std::size_t position) noexcept {
  at_ = begin_ + std::min(position, static_cast<std::size_t>(end_ - begin_));
}

void ObjectParser::skipBlanks() noexcept {
  for (;;) {
    at_ = skipWhite(at_, end_);
    if (at_ == end_ || *at_ != '%')
      return;
    const char *line = at_;
    while (line != end_ && *line != '\r' && *line != '\n')
      ++line;
    if (line == end_ && !isWhole_) {
      ranOut_ = true;
      return;
    }
    at_ = line;
  }
}

Object ObjectParser::next() {
  open_.clear();
  entries_.clear();
  for (;;) {
    ranOut_ = false;
    skipBlanks();
    const char *const start = at_;
    Object object = at_ == end_ || ranOut_ ? Object::ofKind(Kind::end) : parse(0);
    if (!isWhole_ && (ranOut_ || object.kind() == Kind::end)) {
      at_ = start;
      return Object::ofKind(Kind::incomplete);
    }
    if (!object.isKeyword("]") && !object.isKeyword(">>"))
      return object;
  }
}

Object ObjectParser::parse(int depth) {
  for (;;) {
    skipBlanks();
    if (at_ == end_ || ranOut_) {
      ranOut_ = true;
      return Object::ofKind(Kind::end);
    }
    const char c = *at_;
    if (CharacterClass::isNumeric(c)) {
      Object number = parseNumber();
      if (syntax_ == Syntax::objects && number.isInteger())
        static_cast<void>(takeReference(number, number));
      return number;
    }
    switch (c) {
    case '/':
      return parseName();
    case '(':
      return parseLiteralString();
    case '<':
      if (end_ - at_ < 2)
        ranOut_ = true;
      else if (at_[1] == '<')
        return parseDictionary(depth);
      return parseHexString();
    case '[':
      return parseArray(depth);
    case ']':
      ++at_;
      return Object::ofBytes(Kind::keyword, "]");
    case '>':
      if (end_ - at_ < 2)
        ranOut_ = true;
      if (end_ - at_ >= 2 && at_[1] == '>') {
        at_ += 2;
        return Object::ofBytes(Kind::keyword, ">>");
      }
      ++at_;
      break;
    case ')':
    case '{':
    case '}':
      ++at_;
      break;
    default:
      return parseKeyword();
    }
  }
}

// Writers put two signs, a sign in the middle or an exponent where the standard has none of them:
// what begins as a number is one, up to the first character that cannot belong to it.
Object ObjectParser::parseNumber() noexcept {
  constexpr int mostDigits = 18;
  const char *at = at_;
  bool isNegative = false;
  for (; at != end_ && (*at == '+' || *at == '-'); ++at)
    isNegative |= *at == '-';
  std::int64_t digits = 0;
  int count = 0;
  int beyond = 0;
  for (; at != end_ && CharacterClass::isDigit(*at); ++at) {
    if (count < mostDigits) {
      digits = digits * 10 + (*at - '0');
      count += digits != 0 ? 1 : 0;
    } else {
      ++beyond;
    }
  }
  bool isReal = beyond > 0;
  int behindPoint = 0;
  if (at != end_ && *at == '.') {
    isReal = true;
    for (++at; at != end_ && CharacterClass::isDigit(*at); ++at) {
      if (count < mostDigits) {
        digits = digits * 10 + (*at - '0');
        count += digits != 0 ? 1 : 0;
        ++behindPoint;
      }
    }
  }
  while (at != end_ && CharacterClass::isNumeric(*at))
    ++at;
  double exponent = beyond - behindPoint;
  if (at != end_ && (*at == 'e' || *at == 'E')) {
    const char *power = at + 1;
    const bool isDown = power != end_ && *power == '-';
    if (power != end_ && (*power == '-' || *power == '+'))
      ++power;
    const char *const powerEnd = skipDigits(power, end_);
    ranOut_ |= powerEnd == end_;
    if (power != powerEnd) {
      int value = 0;
      for (; power != powerEnd; ++power)
        value = std::min(value * 10 + (*power - '0'), 1000);
      exponent += isDown ? -value : value;
      isReal = true;
      at = powerEnd;
    }
  }
  ranOut_ |= at == end_;
  at_ = at;
  if (!isReal)
    return Object::ofInteger(isNegative ? -digits : digits);
  static constexpr double powers[] = {1, 1e-1, 1e-2, 1e-3, 1e-4, 1e-5, 1e-6};
  double value = static_cast<double>(digits);
  if (exponent <= 0 && exponent >= -6)
    value *= powers[static_cast<int>(-exponent)];
  else
    value *= std::pow(10.0, std::clamp(exponent, -300.0, 280.0));
  return Object::ofReal(isNegative ? -value : value);
}

bool ObjectParser::takeReference(const Object &number, Object &reference) noexcept {
  constexpr std::int64_t most = 0xFFFFFFFF;
  const char *at = skipWhite(at_, end_);
  const char *const generation = at;
  at = skipDigits(at, end_);
  const char *const generationEnd = at;
  if (generationEnd - generation > 10 || number.integer() < 0 || number.integer() > most)
    return false;
  at = skipWhite(at, end_);
  if (at == end_) {
    ranOut_ = true;
    return false;
  }
  if (generation == at_ || generation == generationEnd || *at != 'R')
    return false;
  if (at + 1 == end_)
    ranOut_ = true;
  else if (CharacterClass::isRegular(at[1]))
    return false;
  std::int64_t value = 0;
  for (const char *digit = generation; digit != generationEnd; ++digit)
    value = value * 10 + (*digit - '0');
  reference = Object::ofReference({static_cast<std::uint32_t>(number.integer()),
                                   static_cast<std::uint32_t>(std::min(value, most))});
  at_ = at + 1;
  return true;
}

Object ObjectParser::parseName() {
  const char *const begin = at_ + 1;
  at_ = skipRegular(begin, end_);
  ranOut_ |= at_ == end_;
  const std::string_view raw(begin, static_cast<std::size_t>(at_ - begin));
  if (raw.find('#') == std::string_view::npos)
    return Object::ofBytes(Kind::name, syntax_ == Syntax::content ? raw : arena_.copy(raw));
  text_.clear();
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const int high =
        raw[i] == '#' && i + 2 < raw.size() ? CharacterClass::hexDigit(raw[i + 1]) : -1;
    const int low = high >= 0 ? CharacterClass::hexDigit(raw[i + 2]) : -1;
    text_ += low >= 0 ? static_cast<char>(high * 16 + low) : raw[i];
    i += low >= 0 ? 2 : 0;
  }
  return Object::ofBytes(Kind::name, arena_.copy(text_));
}

Object ObjectParser::stringOf(std::string_view bytes, bool isCopied) {
  if (decryption_ != nullptr)
    return Object::ofBytes(Kind::string, decryption_->decrypted(bytes, arena_));
  return Object::ofBytes(Kind::string, isCopied ? arena_.copy(bytes) : bytes);
}

Object ObjectParser::parseLiteralString() {
  const char *const begin = ++at_;
  int depth = 1;
  const char *at = begin;
  bool isPlain = true;
  for (; at != end_; ++at) {
    if (*at == '\\') {
      isPlain = false;
      if (++at == end_)
        break;
    } else if (*at == '\r') {
      isPlain = false;
    } else if (*at == '(') {
      ++depth;
    } else if (*at == ')' && --depth == 0) {
      break;
    }
  }
  const std::string_view raw(begin, static_cast<std::size_t>(at - begin));
  ranOut_ |= at == end_;
  at_ = at == end_ ? at : at + 1;
  if (ranOut_ && !isWhole_)
    return {};
  if (isPlain)
    return stringOf(raw, syntax_ == Syntax::objects);

  text_.clear();
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] == '\r') {
      text_ += '\n';
      i += raw.substr(i + 1).starts_with('\n') ? 1 : 0;
      continue;
    }
    if (raw[i] != '\\') {
      text_ += raw[i];
      continue;
    }
    if (++i == raw.size())
      break;
    switch (raw[i]) {
    case 'n':
      text_ += '\n';
      break;
    case 'r':
      text_ += '\r';
      break;
    case 't':
      text_ += '\t';
      break;
    case 'b':
      text_ += '\b';
      break;
    case 'f':
      text_ += '\f';
      break;
    case '\r':
      i += raw.substr(i + 1).starts_with('\n') ? 1 : 0;
      break;
    case '\n':
      break;
    default:
      if (raw[i] >= '0' && raw[i] <= '7') {
        int code = 0;
        std::size_t last = i;
        for (; last < raw.size() && last < i + 3 && raw[last] >= '0' && raw[last] <= '7'; ++last)
          code = code * 8 + (raw[last] - '0');
        text_ += static_cast<char>(code);
        i = last - 1;
      } else {
        text_ += raw[i];
      }
    }
  }
  return stringOf(text_, true);
}

Object ObjectParser::parseHexString() {
  text_.clear();
  int high = -1;
  const char *at = at_ + 1;
  for (; at != end_ && *at != '>'; ++at) {
    const int digit = CharacterClass::hexDigit(*at);
    if (digit < 0)
      continue;
    if (high >= 0)
      text_ += static_cast<char>(high * 16 + digit);
    high = high >= 0 ? -1 : digit;
  }
  ranOut_ |= at == end_;
  at_ = at == end_ ? at : at + 1;
  if (high >= 0)
    text_ += static_cast<char>(high * 16);
  return stringOf(text_, true);
}

bool ObjectParser::endsContainer(const Object &keyword) const noexcept {
  if (syntax_ == Syntax::content)
    return true;
  const std::string_view word = keyword.bytes();
  return word.starts_with("endobj") || word == "stream" || word.starts_with("endstream") ||
         word == "obj" || word == "xref" || word == "trailer" || word == "startxref";
}

Object ObjectParser::parseArray(int depth) {
  ++at_;
  if (depth == deepest)
    return {};
  const std::size_t from = open_.size();
  for (;;) {
    const char *const start = at_;
    const Object item = parse(depth + 1);
    if (item.kind() == Kind::end || item.isKeyword("]"))
      break;
    if (item.kind() != Kind::keyword) {
      open_.push_back(item);
    } else if (item.bytes() == ">>" || endsContainer(item)) {
      at_ = start;
      break;
    }
  }
  const std::span<const Object> items(open_.data() + from, open_.size() - from);
  const Object array = Object::ofArray({arena_.copy(items), items.size()});
  open_.resize(from);
  return array;
}

Object ObjectParser::parseDictionary(int depth) {
  at_ += 2;
  if (depth == deepest)
    return {};
  const std::size_t from = entries_.size();
  Object key;
  for (;;) {
    const char *const start = at_;
    const Object item = parse(depth + 1);
    if (item.kind() == Kind::end || item.isKeyword(">>"))
      break;
    if (item.kind() == Kind::keyword) {
      if (endsContainer(item)) {
        at_ = start;
        break;
      }
    } else if (key.isName()) {
      entries_.push_back({key.name(), item});
      key = {};
    } else if (item.isName()) {
      key = item;
    }
  }
  const std::size_t count = entries_.size() - from;
  if (count >= Dictionary::sortedFrom)
    std::stable_sort(entries_.begin() + static_cast<std::ptrdiff_t>(from), entries_.end(),
                     [](const auto &a, const auto &b) { return a.key < b.key; });
  const std::span<const DictionaryEntry> entries(entries_.data() + from, count);
  const Object dictionary =
      Object::ofDictionary(Dictionary({arena_.copy(entries), entries.size()}));
  entries_.resize(from);
  return dictionary;
}

Object ObjectParser::parseKeyword() {
  const char *const begin = at_;
  at_ = skipRegular(at_, end_);
  ranOut_ |= at_ == end_;
  const std::string_view word(begin, static_cast<std::size_t>(at_ - begin));
  if (word == "true" || word == "false")
    return Object::ofBoolean(word == "true");
  if (word == "null")
    return {};
  return Object::ofBytes(Kind::keyword, word);
}

} // namespace searchsystem
