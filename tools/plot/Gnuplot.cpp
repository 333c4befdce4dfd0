#include "plot/Gnuplot.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "base/Refusal.h"
#include "base/TextFile.h"

namespace peakbox {

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

std::string readAll(const File& file) { return readFile(compose("/dev/fd/", fileno(file.get()))).value_or(""); }

/// Replaces a file, but only by a whole one: beside it first, where signals that end the process leave nothing.
bool replaceFile(const std::string& path, const std::string& contents) {
  const std::string beside = compose(path, ".", getpid());
  sigset_t all{};
  sigset_t before{};
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &before);
  std::ofstream stream(beside);
  const bool isWhole = !!(stream << contents << std::flush) && std::rename(beside.c_str(), path.c_str()) == 0;
  if (!isWhole) std::remove(beside.c_str());
  sigprocmask(SIG_SETMASK, &before, nullptr);
  return isWhole;
}

}  // namespace

std::string quote(std::string_view text, std::size_t room) {
  std::string quoted = "\"";
  std::size_t length = 0;
  for (; !text.empty(); text.remove_prefix(length)) {
    const auto code = static_cast<unsigned char>(text[0]);
    const auto next = static_cast<unsigned char>(text.size() > 1 ? text[1] : 0);
    const bool isLatin = code >= 0xc3 && code <= 0xc5 && (next & 0xc0) == 0x80;
    const bool isGreek =
        (code == 0xce && next > 0x90 && next < 0xc0 && next != 0xa2) || (code == 0xcf && next >= 0x80 && next < 0x8f);
    length = text.starts_with("\u2032") ? 3 : isLatin || isGreek ? 2 : 1;
    if (--room == 0 && text.size() > length) return quoted + "\u2026\"";
    // Drawn without a glyph, a character can cover a page. What gnuplot would take for the end or an escape is octal.
    const bool isStrange = length == 1 && (code < 0x20 || code > 0x7e);
    quoted += isStrange      ? "?"
              : code == '"'  ? "\\042"
              : code == '\\' ? "\\134"
              : code == '`'  ? "\\140"
                             : text.substr(0, length);
  }
  return quoted + "\"";
}

std::string writeAxis(char axis, double from, double to, double inset) {
  const double low = std::min(from, to) + inset * std::fabs(to - from);
  const double high = std::max(from, to) - inset * std::fabs(to - from);
  double step = std::pow(10.0, std::ceil(std::log10(high - low)));
  double count = 0;
  for (int n = 0; count < 2 && n < 20; ++n) {  // far from 0 there may be no more digits
    step *= n % 3 == 1 ? 0.4 : 0.5;
    count = std::floor(high / step) - std::ceil(low / step) + 1;
  }
  return compose("set ", axis, "range [", from, ":", to, "]\nset ", axis, "tics ", step * std::ceil(low / step), ",",
                 step * std::ceil(count / 2), ",", high, "\n");
}

void drawPages(const std::string& script, const std::string& output) {
  const File drawn(std::tmpfile(), std::fclose);  // these have no names that could be left behind
  const File messages(std::tmpfile(), std::fclose);
  std::array<int, 2> ends{};
  if (!drawn || !messages || pipe(ends.data()) != 0) refuse(output, "no temporary files");
  signal(SIGPIPE, SIG_IGN);
  const pid_t child = fork();
  if (child == 0) {
    unsetenv("GNUTERM");  // the user's, as are the files that -d passes over
    dup2(ends[0], STDIN_FILENO);
    dup2(fileno(drawn.get()), STDOUT_FILENO);
    dup2(fileno(messages.get()), STDERR_FILENO);
    close(ends[1]);
    execlp("gnuplot", "gnuplot", "-d", "/dev/fd/0", nullptr);  // read as a file: its standard input it reads in bytes
    _exit(127);
  }
  close(ends[0]);
  // Where this process is ended, gnuplot's script ends, too.
  for (std::size_t done = 0; done < script.size();) {
    const ssize_t count = write(ends[1], script.data() + done, script.size() - done);
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  close(ends[1]);
  int status = -1;
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 127)
    refuse("gnuplot", "cannot be run; the Debian package is gnuplot-nox");
  std::string reason = "ended early";
  for (const std::string& line : splitLines(readAll(messages))) reason = line.empty() ? reason : line;
  const std::string pages = readAll(drawn);
  if (status != 0 || !pages.ends_with("%%EOF\n")) refuse("gnuplot", reason);
  if (!replaceFile(output, pages)) refuse(output, "cannot be written");
}

}  // namespace peakbox
