#pragma once
// A message sink for tests of the standalone host: keeps every message and information line.

#include <string>
#include <vector>

#include "StandaloneHost.h"

namespace lattica::standalone {

class RecordingSink : public MessageSink {
 public:
  void message(const std::string& text) override { messages.push_back(text); }
  void info(const std::string& text) override { infos.push_back(text); }
  std::vector<std::string> messages;
  std::vector<std::string> infos;
};

}  // namespace lattica::standalone
