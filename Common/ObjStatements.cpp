#include "ObjStatements.h"

namespace lattica {
namespace {

bool isLineSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Reads "%d" at text[*at]; advances past it when there is one.
bool takeInt(std::string_view text, size_t* at, int64_t* value) {
  if (*at > text.size()) return false;
  const size_t taken = parseObjInt(text.substr(*at), value);
  *at += taken;
  return taken > 0;
}

bool takeChar(std::string_view text, size_t* at, char c) {
  if (*at < text.size() && text[*at] == c) {
    ++*at;
    return true;
  }
  return false;
}

std::string_view firstWordOf(std::string_view line) {
  size_t start = 0;
  while (start < line.size() && isLineSpace(line[start])) ++start;
  size_t end = start;
  while (end < line.size() && !isLineSpace(line[end])) ++end;
  return line.substr(start, end - start);
}

}  // namespace

ObjFaceForm parseFirstFaceCorner(std::string_view token, ObjFaceCorner* corner) {
  int64_t a = 0, b = 0, c = 0;
  size_t at = 0;
  if (token.find("//") != std::string_view::npos) {
    if (takeInt(token, &at, &a)) {
      corner->vertex = a;
      if (takeChar(token, &at, '/') && takeChar(token, &at, '/') && takeInt(token, &at, &b)) {
        corner->normal = b;
      }
    }
    return ObjFaceForm::kVertexNormal;
  }
  const bool first = takeInt(token, &at, &a);
  const bool second = first && takeChar(token, &at, '/') && takeInt(token, &at, &b);
  const bool third = second && takeChar(token, &at, '/') && takeInt(token, &at, &c);
  if (third) {
    corner->vertex = a;
    corner->texCoord = b;
    corner->normal = c;
    return ObjFaceForm::kVertexTexNormal;
  }
  if (second) {
    corner->vertex = a;
    corner->texCoord = b;
    return ObjFaceForm::kVertexTex;
  }
  if (first) corner->vertex = a;
  return ObjFaceForm::kVertex;
}

bool readFaceCorner(ObjTextCursor& cursor, ObjFaceForm form, ObjFaceCorner* corner) {
  int64_t value = 0;
  if (!cursor.readInt(&value)) return false;
  corner->vertex = value;
  switch (form) {
    case ObjFaceForm::kVertexNormal:
      if (cursor.readChar('/') && cursor.readChar('/') && cursor.readInt(&value)) {
        corner->normal = value;
      }
      break;
    case ObjFaceForm::kVertexTexNormal:
      if (cursor.readChar('/') && cursor.readInt(&value)) {
        corner->texCoord = value;
        if (cursor.readChar('/') && cursor.readInt(&value)) corner->normal = value;
      }
      break;
    case ObjFaceForm::kVertexTex:
      if (cursor.readChar('/') && cursor.readInt(&value)) corner->texCoord = value;
      break;
    case ObjFaceForm::kVertex:
      break;
  }
  return true;
}

std::string lineName(std::string_view line) {
  return std::string(firstWordOf(line));
}

std::string groupNameOf(std::string_view line) {
  size_t start = 0;
  size_t end = line.size();
  while (start < end && isLineSpace(line[start])) ++start;
  while (end > start && isLineSpace(line[end - 1])) --end;
  return std::string(line.substr(start, end - start));
}

}  // namespace lattica
