// A shell in which the tool is driven as a user does, and tables of what is typed.
#pragma once

#include <sstream>

#include "int/CardProcess.h"

namespace VELTRO::KELVO::Test {

// A shell in a directory of its own, in which `kelvo` is the tool and KELVO_CARD the card.
class ToolShell {
 public:
  explicit ToolShell(const std::vector<std::string>& cardArguments = {"--speed", "max"})
      : card_(cardArguments) {}

  // Its exit code, and what it prints on standard output and on standard error.
  struct Outcome {
    int Code;
    std::string Output, Error;
  };
  Outcome Run(const std::string& command) const {
    const std::string error = directory_.Path + "/error";
    const std::string script = "cd " + directory_.Path +
                               "; kelvo() { " TOOL_PROGRAM " \"$@\"; }; unset KELVO_SERIAL XDG_STATE_HOME; " +
                               "export HOME=" + directory_.Path + "/home KELVO_CARD=" + CardPlace() + "; " +
                               command;
    const std::string line = "bash -c '" + Quoted(script) + "' 2>" + error;
    std::string output;
    std::FILE* const pipe = popen(line.c_str(), "r");
    for (int next; (next = fgetc(pipe)) != EOF;) output += static_cast<char>(next);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output, ContentOf(error)};
  }

  int CardPort() const { return card_.GetPort(); }
  std::string CardPlace() const { return "127.0.0.1:" + std::to_string(CardPort()); }

 private:
  static std::string Quoted(const std::string& text) {
    std::string quoted;
    for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted;
  }

  const CardProcess card_;
  const TemporaryDirectory directory_;
};

// Remarks come ahead of it.
inline int LinesOfErrors(const std::string& text) {
  int count = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) count += line.starts_with("kelvo: ") ? 1 : 0;
  return count;
}

struct Row {
  std::string Command;
  int Code;
  std::string Output = {};  // in what it prints, or says when it fails
};

inline void ExpectAll(const ToolShell& shell, std::span<const Row> rows) {
  for (const auto& [command, code, text] : rows) {
    const auto [exitCode, output, error] = shell.Run(command);
    const bool isDone = code == 0 || code == 4;
    EXPECT_EQ(exitCode, code) << command << "\n" << output << error;
    EXPECT_NE((isDone ? output : error).find(text), std::string::npos) << command << "\n"
                                                                       << output << error << "lacks " << text;
    EXPECT_EQ(LinesOfErrors(error), isDone ? 0 : 1) << command << "\n" << error;
  }
}

}  // namespace VELTRO::KELVO::Test
