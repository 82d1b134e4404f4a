#include "ObjTextCursor.h"

#include <cstdlib>

namespace lattica {
namespace {

// Beyond any index or count a model can have; keeps accumulation far from overflow.
constexpr int64_t kIntSaturation = int64_t(1) << 40;

bool isObjSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

size_t parseObjInt(std::string_view text, int64_t* value) {
  size_t i = 0;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    negative = text[i] == '-';
    ++i;
  }
  const size_t firstDigit = i;
  int64_t magnitude = 0;
  while (i < text.size() && isDigit(text[i])) {
    if (magnitude < kIntSaturation) magnitude = magnitude * 10 + (text[i] - '0');
    ++i;
  }
  if (i == firstDigit) return 0;
  *value = negative ? -magnitude : magnitude;
  return i;
}

void ObjTextCursor::skipWhitespace() {
  while (pos_ < size_ && isObjSpace(text_[pos_])) ++pos_;
}

bool ObjTextCursor::nextToken(std::string_view* token) {
  skipWhitespace();
  if (pos_ >= size_) return false;
  const size_t start = pos_;
  while (pos_ < size_ && !isObjSpace(text_[pos_])) ++pos_;
  *token = std::string_view(text_ + start, pos_ - start);
  return true;
}

std::string_view ObjTextCursor::restOfLine() {
  const size_t start = pos_;
  const size_t limit =
      start + (kLineBufferBytes - 1) < size_ ? start + (kLineBufferBytes - 1) : size_;
  while (pos_ < limit) {
    if (text_[pos_++] == '\n') break;
  }
  return std::string_view(text_ + start, pos_ - start);
}

bool ObjTextCursor::readFloat(float* value) {
  skipWhitespace();
  if (pos_ >= size_) return false;
  char* end = nullptr;
  const float parsed = std::strtof(text_ + pos_, &end);
  const size_t taken = size_t(end - (text_ + pos_));
  // strtof stops at the text's terminating zero; a zero inside the text ends a number too.
  if (taken == 0 || pos_ + taken > size_) return false;
  pos_ += taken;
  *value = parsed;
  return true;
}

bool ObjTextCursor::readInt(int64_t* value) {
  skipWhitespace();
  const size_t taken = parseObjInt(std::string_view(text_ + pos_, size_ - pos_), value);
  pos_ += taken;
  return taken > 0;
}

bool ObjTextCursor::readChar(char c) {
  if (pos_ < size_ && text_[pos_] == c) {
    ++pos_;
    return true;
  }
  return false;
}

}  // namespace lattica
