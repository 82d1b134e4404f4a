#pragma once
// One walk over the statements of an OBJ text, shared by both passes of the reader so that they
// see exactly the same vertices, groups and faces. A token's first character decides what it is;
// characters outside '#'..'v', and anything not listed, skip the line. The handler decides what
// is counted or stored:
//   onVertex(x, y, z), onNormal(x, y, z), onTexCoord(u, v), onMaterialLibrary(name),
//   onGroup(name), onUseMaterial(name), onFaceCorner(corner, position) -> bool (false stops the
//   walk), onFaceEnd(cornerCount).

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "ObjTextCursor.h"

namespace lattica {

// One vertex of a face: indices as the file writes them (0 where the form gives none).
struct ObjFaceCorner {
  int64_t vertex = 0;
  int64_t texCoord = 0;
  int64_t normal = 0;
};

// The four forms of a face vertex, recognised on the first one and kept for the rest of the face.
enum class ObjFaceForm { kVertexNormal, kVertexTexNormal, kVertexTex, kVertex };

// Form and indices of a face's first vertex token ("%d//%d", "%d/%d/%d", "%d/%d", "%d").
ObjFaceForm parseFirstFaceCorner(std::string_view token, ObjFaceCorner* corner);

// A further vertex of the face in the given form, read from the cursor. Indices that the form
// gives but the text lacks keep their previous values. False when not even the vertex is there.
bool readFaceCorner(ObjTextCursor& cursor, ObjFaceForm form, ObjFaceCorner* corner);

// The first whitespace-delimited word of a statement's remaining line (a library or material
// name).
std::string lineName(std::string_view line);

// The group name of a "g" statement: the rest of the line without surrounding whitespace.
std::string groupNameOf(std::string_view line);

enum class ObjWalkEnd {
  kComplete,      // the end of the text
  kUnknownToken,  // a token starting with 'v' that is no vertex statement
  kStopped,       // the handler refused a face vertex
};

// Walks every statement. An unknown 'v' token ends the walk after the reader's console line.
template <typename Handler>
ObjWalkEnd walkObjStatements(ObjTextCursor& cursor, Handler& handler) {
  std::string_view token;
  while (cursor.nextToken(&token)) {
    const unsigned char first = static_cast<unsigned char>(token[0]);
    if (first < '#' || first > 'v') {
      cursor.restOfLine();
      continue;
    }
    switch (first) {
      case 'v': {
        const char second = token.size() > 1 ? token[1] : '\0';
        float a[3] = {0.0f, 0.0f, 0.0f};
        if (second == '\0') {
          cursor.readFloat(&a[0]) && cursor.readFloat(&a[1]) && cursor.readFloat(&a[2]);
          handler.onVertex(a[0], a[1], a[2]);
        } else if (second == 'n') {
          cursor.readFloat(&a[0]) && cursor.readFloat(&a[1]) && cursor.readFloat(&a[2]);
          handler.onNormal(a[0], a[1], a[2]);
        } else if (second == 't') {
          cursor.readFloat(&a[0]) && cursor.readFloat(&a[1]);
          handler.onTexCoord(a[0], a[1]);
        } else {
          const std::string name(token.substr(0, 1023));
          std::fprintf(stderr, "_glmFirstPass(): Unknown token \"%s\".\n", name.c_str());
          return ObjWalkEnd::kUnknownToken;
        }
        break;
      }
      case 'm':
        handler.onMaterialLibrary(lineName(cursor.restOfLine()));
        break;
      case 'g':
        handler.onGroup(groupNameOf(cursor.restOfLine()));
        break;
      case 'u':
        handler.onUseMaterial(lineName(cursor.restOfLine()));
        break;
      case 'f':
      case 'p': {
        std::string_view firstToken;
        if (!cursor.nextToken(&firstToken)) {
          handler.onFaceEnd(0);
          break;
        }
        ObjFaceCorner corner;
        const ObjFaceForm form = parseFirstFaceCorner(firstToken, &corner);
        if (!handler.onFaceCorner(corner, 0)) return ObjWalkEnd::kStopped;
        uint64_t count = 1;
        while (readFaceCorner(cursor, form, &corner)) {
          if (!handler.onFaceCorner(corner, count)) return ObjWalkEnd::kStopped;
          ++count;
        }
        handler.onFaceEnd(count);
        break;
      }
      default:
        cursor.restOfLine();
        break;
    }
  }
  return ObjWalkEnd::kComplete;
}

}  // namespace lattica
