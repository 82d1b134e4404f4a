#pragma once
// Reads OBJ text the way formatted stream input does: whitespace-separated tokens, numbers that
// skip any whitespace before them (line breaks included) and consume nothing when none is there,
// and a line skip bounded by the reader's 1024-byte line buffer, so a longer line goes on as
// tokens. Both passes of the reader walk the text with the same cursor, which keeps them in step.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace lattica {

class ObjTextCursor {
 public:
  static constexpr size_t kLineBufferBytes = 1024;

  // The text must outlive the cursor; its terminating zero bounds the number conversions.
  explicit ObjTextCursor(const std::string& text) : text_(text.c_str()), size_(text.size()) {}

  void rewind() { pos_ = 0; }

  // The next run of non-whitespace characters; false at the end of the text.
  bool nextToken(std::string_view* token);
  // The rest of the current line through its line break, at most 1023 characters.
  std::string_view restOfLine();
  // A decimal (or hexadecimal, infinite, NaN) float, as "%f" reads it.
  bool readFloat(float* value);
  // A decimal integer with an optional sign, as "%d" reads it; far out-of-range values saturate.
  bool readInt(int64_t* value);
  // Exactly this character at the present place, with nothing skipped before it.
  bool readChar(char c);

 private:
  void skipWhitespace();

  const char* text_;
  size_t size_;
  size_t pos_ = 0;
};

// The integer at the start of text (optional sign, then digits), as readInt reads it; the count
// of characters taken, or 0 when there is no integer.
size_t parseObjInt(std::string_view text, int64_t* value);

}  // namespace lattica
