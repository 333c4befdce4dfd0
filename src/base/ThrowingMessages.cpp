#include "base/ThrowingMessages.h"

#include <utility>

#include "base/Messages.h"

namespace peakbox {

namespace {

std::string& printedMessages() {
  static std::string messages;
  return messages;
}

}  // namespace

std::string takeMessages() { return std::exchange(printedMessages(), {}); }

void printMessage(std::string_view text) { printedMessages() += text; }

void fail(std::string_view message, int status) { throw RunEnd{std::string(message), status}; }

}  // namespace peakbox
