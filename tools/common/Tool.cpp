#include "common/Tool.h"

#include <getopt.h>

#include <exception>
#include <iostream>
#include <new>

#include "base/Messages.h"
#include "base/Refusal.h"
#include "base/ThrowingMessages.h"

namespace peakbox {

namespace {

constexpr option kLongOptions[] = {
    {"help", no_argument, nullptr, 1}, {"version", no_argument, nullptr, 2}, {nullptr, 0, nullptr, 0}};

}  // namespace

void Arguments::refuseUsage() const { fail(usage, 2); }

int runTool(const Tool& tool, int count, char** words) {
  nameProgram(tool.name);
  try {
    Arguments arguments;
    arguments.usage = std::string("usage: ") + tool.name + " " + tool.usage + "\n";
    optind = 0;  // the tool may have run before, in programs that call it as a function
    int option = 0;
    while ((option = getopt_long(count, words, tool.options, kLongOptions, nullptr)) != -1) {
      if (option == 1) return answer(arguments.usage + "See " + tool.name + "(1).\n");
      if (option == 2) return answer(std::string(tool.name) + " " PEAKBOX_VERSION "\n");
      if (option == '?') arguments.refuseUsage();
      arguments.values[static_cast<char>(option)] = optarg == nullptr ? "" : optarg;
    }
    arguments.operands.assign(words + optind, words + count);
    return tool.run(arguments);
  } catch (const RunEnd& end) {
    std::cerr << end.message;
    return end.status;
  } catch (const std::bad_alloc&) {
    std::cerr << tool.name << ": not enough memory\n";
  } catch (const std::exception& error) {
    std::cerr << tool.name << ": " << error.what() << "\n";
  }
  return 1;
}

int answer(const std::string& text) {
  if (!(std::cout << text << std::flush)) refuse("standard output", "cannot be written");
  return 0;
}

}  // namespace peakbox
