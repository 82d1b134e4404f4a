#include "SequenceDataFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <vector>

#include "Scene.h"

namespace lattica::standalone {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// Far above any record; a larger file is surely not one.
constexpr std::uintmax_t kMaxRecordFileSize = 16u << 20;

[[noreturn]] void fail(const std::string& key, const std::string& what) {
  throw SceneError(key + ": " + what);
}

double finiteNumber(const json& v, const std::string& key) {
  if (!v.is_number() || !std::isfinite(v.get<double>())) {
    fail(key, "expected a number, got " + describeJson(v));
  }
  return v.get<double>();
}

void readCurve(const json& v, const std::string& key, float (&curve)[kCurveEntries]) {
  if (!v.is_array() || v.size() != size_t(kCurveEntries)) {
    fail(key, "expected an array of " + std::to_string(kCurveEntries) + " numbers, got " +
                  describeJson(v));
  }
  for (int32_t i = 0; i < kCurveEntries; ++i) {
    curve[i] = float(finiteNumber(v[size_t(i)], key + "[" + std::to_string(i) + "]"));
  }
}

void readColorMap(const json& v, const std::string& key, SequenceRecord& record) {
  if (!v.is_array() || v.size() > size_t(kColorKeyCount)) {
    fail(key, "expected an array of at most " + std::to_string(kColorKeyCount) +
                  " [position, r, g, b] keys, got " + describeJson(v));
  }
  std::fill_n(record.colorKeyPos, kColorKeyCount, kColorKeyEnd);
  std::fill_n(record.colorKeyR, kColorKeyCount, 0.0f);
  std::fill_n(record.colorKeyG, kColorKeyCount, 0.0f);
  std::fill_n(record.colorKeyB, kColorKeyCount, 0.0f);
  int32_t previous = 0;
  for (size_t i = 0; i < v.size(); ++i) {
    const std::string keyI = key + "[" + std::to_string(i) + "]";
    const json& entry = v[i];
    if (!entry.is_array() || entry.size() != 4) {
      fail(keyI, "expected [position 0..200, r, g, b], got " + describeJson(entry));
    }
    const double position = finiteNumber(entry[0], keyI);
    if (position != std::trunc(position) || position < 0 || position > kCurveEntries - 1) {
      fail(keyI, "expected a whole position from 0 to 200, got " + describeJson(entry[0]));
    }
    if (int32_t(position) < previous) {
      fail(keyI, "positions must ascend, got " + describeJson(entry[0]) + " after " +
                     std::to_string(previous));
    }
    previous = int32_t(position);
    record.colorKeyPos[i] = uint8_t(position);
    record.colorKeyR[i] = float(finiteNumber(entry[1], keyI));
    record.colorKeyG[i] = float(finiteNumber(entry[2], keyI));
    record.colorKeyB[i] = float(finiteNumber(entry[3], keyI));
  }
  expandColorCurves(record);
}

void readGraphFlags(const json& v, const std::string& key, SequenceRecord& record) {
  if (!v.is_number_integer() || v.get<int64_t>() < 0 || v.get<int64_t>() > 255) {
    fail(key, "expected an integer from 0 to 255, got " + describeJson(v));
  }
  record.graphFlags = uint8_t(v.get<int64_t>());
}

void readShadowLightName(const json& v, const std::string& key, SequenceRecord& record) {
  if (!v.is_string()) fail(key, "expected a text, got " + describeJson(v));
  const std::string name = v.get<std::string>();
  if (name.size() > kShadowLightNameSize - 1) {
    fail(key, "at most " + std::to_string(kShadowLightNameSize - 1) + " characters, got " +
                  describeJson(v));
  }
  std::memset(record.shadowLightName, 0, kShadowLightNameSize);
  std::memcpy(record.shadowLightName, name.data(), name.size());
}

std::string errnoText(int e) {
  return std::strerror(e);
}

// Writes all bytes, retrying short writes; returns an empty string or the reason.
std::string writeAll(int fd, const uint8_t* bytes, size_t size) {
  while (size > 0) {
    const ssize_t n = ::write(fd, bytes, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      return errnoText(errno);
    }
    bytes += n;
    size -= size_t(n);
  }
  return {};
}

}  // namespace

StoredRecordReading readSequenceRecordFile(const fs::path& file, const std::string& key) {
  const std::string what = "cannot read record file '" + file.string() + "'";
  std::error_code ec;
  const std::uintmax_t size = fs::file_size(file, ec);
  if (ec) fail(key, what + ": " + ec.message());
  if (size > kMaxRecordFileSize) fail(key, what + ": too large for a record");
  std::ifstream in(file, std::ios::binary);
  if (!in) fail(key, what);
  std::vector<uint8_t> bytes(static_cast<size_t>(size));
  in.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(bytes.size()));
  if (!in || in.gcount() != std::streamsize(bytes.size())) fail(key, what + ": short read");
  return readStoredSequenceRecord(std::span<const uint8_t>(bytes));
}

StoredRecordReading readSequenceData(const json& value, const fs::path& folder,
                                     const std::string& key) {
  static const char* const kFields[] = {"file",       "opacityCurve",   "map1Curve",
                                        "map2Curve",  "map3Curve",      "colorMap",
                                        "graphFlags", "shadowLightName"};
  if (!value.is_object()) fail(key, "expected an object, got " + describeJson(value));
  for (const auto& item : value.items()) {
    if (std::find(std::begin(kFields), std::end(kFields), item.key()) == std::end(kFields)) {
      fail(key + "." + item.key(), "unknown key");
    }
  }

  if (value.contains("file")) {
    const std::string fileKey = key + ".file";
    if (value.size() != 1) fail(fileKey, "a record file takes no other sequence data fields");
    const json& file = value.at("file");
    if (!file.is_string()) fail(fileKey, "expected a file name, got " + describeJson(file));
    return readSequenceRecordFile(folder / file.get<std::string>(), fileKey);
  }

  StoredRecordReading reading = readStoredSequenceRecord(std::nullopt);
  SequenceRecord& record = reading.record;
  auto field = [&](const char* name) -> const json* {
    return value.contains(name) ? &value.at(name) : nullptr;
  };
  const std::string prefix = key + ".";
  if (const json* v = field("opacityCurve"))
    readCurve(*v, prefix + "opacityCurve", record.opacityCurve);
  if (const json* v = field("map1Curve")) readCurve(*v, prefix + "map1Curve", record.map1Curve);
  if (const json* v = field("map2Curve")) readCurve(*v, prefix + "map2Curve", record.map2Curve);
  if (const json* v = field("map3Curve")) readCurve(*v, prefix + "map3Curve", record.map3Curve);
  if (const json* v = field("colorMap")) readColorMap(*v, prefix + "colorMap", record);
  if (const json* v = field("graphFlags")) readGraphFlags(*v, prefix + "graphFlags", record);
  if (const json* v = field("shadowLightName")) {
    readShadowLightName(*v, prefix + "shadowLightName", record);
  }
  return reading;
}

WriteResult writeSequenceRecordFile(const SequenceRecord& record, const std::string& path) {
  auto failure = [&](const std::string& reason) {
    return WriteResult{false, "cannot write '" + path + "': " + reason};
  };
  const fs::path finalPath = fs::absolute(fs::path(path));
  std::error_code ec;
  if (!finalPath.parent_path().empty()) fs::create_directories(finalPath.parent_path(), ec);
  if (ec) return failure("cannot create folder '" + finalPath.parent_path().string() + "'");

  static std::atomic<unsigned> counter{0};
  TemporaryFileRegistry& registry = TemporaryFileRegistry::process();
  std::string tempName(1, '.');
  tempName += finalPath.filename().string().substr(0, 200);
  tempName += ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter.fetch_add(1));
  const fs::path temp = finalPath.parent_path() / tempName;
  const int slot = registry.add(temp.native());
  const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) {
    const int e = errno;
    registry.remove(slot);
    return failure(errnoText(e));
  }
  std::string reason =
      writeAll(fd, reinterpret_cast<const uint8_t*>(&record), sizeof(SequenceRecord));
  if (reason.empty() && ::fsync(fd) != 0 && errno != EINVAL) reason = errnoText(errno);
  if (::close(fd) != 0 && reason.empty() && errno != EINTR) reason = errnoText(errno);
  if (reason.empty() && ::rename(temp.c_str(), finalPath.c_str()) != 0) reason = errnoText(errno);
  if (!reason.empty()) ::unlink(temp.c_str());
  registry.remove(slot);
  return reason.empty() ? WriteResult{true, {}} : failure(reason);
}

}  // namespace lattica::standalone
