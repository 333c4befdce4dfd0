#pragma once

#include <map>
#include <string>
#include <vector>

namespace peakbox {

struct Tool;

/// What a companion is called with.
class Arguments {
 public:
  bool has(char option) const { return values.contains(option); }
  /// The value of an option, that of the last one where it is given twice; empty where it is not given.
  std::string get(char option) const { return has(option) ? values.at(option) : ""; }
  const std::vector<std::string>& getOperands() const { return operands; }

  /// Ends a companion that is called in another way than its usage says.
  [[noreturn]] void refuseUsage() const;

 private:
  friend int runTool(const Tool& tool, int count, char** words);

  std::string usage;
  std::map<char, std::string> values;
  std::vector<std::string> operands;
};

/// A companion: its name, what its usage says behind the name, its options as getopt has them, and what it does, which
/// returns its exit status.
struct Tool {
  const char* name;
  const char* usage;
  const char* options;
  int (*run)(const Arguments&);
};

/// The frame of every companion: answers --help and --version, ends wrong usage with status 2 and whatever goes wrong
/// with a message and status 1.
int runTool(const Tool& tool, int count, char** words);

/// Writes a tool's answer to standard output and returns its status, 0; refuses where it cannot be written.
int answer(const std::string& text);

}  // namespace peakbox
