// The virtual card as a child process, on a port of its own.
#pragma once

#include <sys/prctl.h>

#include "support/Process.h"
#include "support/TemporaryDirectory.h"

namespace VELTRO::KELVO::Test {

// It ends with the object, and the test fails unless it ends in order then. It never outlives the test.
class CardProcess {
 public:
  // Takes a free port when the arguments name none. Without a descriptor for it stderr goes where stdout does.
  explicit CardProcess(std::vector<std::string> arguments = {}, int standardError = -1) {
    if (std::ranges::find(arguments, "--port") == arguments.end()) {
      arguments.insert(arguments.end(), {"--port", "0"});
    }
    arguments.emplace(arguments.begin(), VIRTUAL_CARD_PROGRAM);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    int ends[2], inputEnds[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(inputEnds, O_CLOEXEC), 0);
    pid_ = fork();
    if (pid_ == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      alarm(540);  // seconds, so that a card that hangs fails its test
      dup2(inputEnds[0], STDIN_FILENO);
      dup2(ends[1], STDOUT_FILENO);
      dup2(standardError < 0 ? ends[1] : standardError, STDERR_FILENO);
      execv(argv[0], argv.data());
      _exit(127);
    }
    close(ends[1]);
    close(inputEnds[0]);
    input_ = fdopen(inputEnds[1], "w");
    output_ = fdopen(ends[0], "r");
    firstLine_ = ReadLine();
    for (std::string line = firstLine_; !line.empty(); line = ReadLine()) {
      if (line.starts_with("Listening on ")) {
        firstLine_ = line;
        break;
      }
      warnings_ += line;
    }
  }
  ~CardProcess() {
    if (pid_ > 0) {
      EXPECT_EQ(End(SIGTERM), 0) << firstLine_;
    }
    EndInput();
    fclose(output_);
  }
  CardProcess(const CardProcess&) = delete;
  CardProcess& operator=(const CardProcess&) = delete;

  // The line that tells the place it listens on; when there is none, the first one.
  const std::string& GetFirstLine() const { return firstLine_; }
  // What it wrote ahead of that line.
  const std::string& GetWarnings() const { return warnings_; }
  pid_t GetId() const { return pid_; }
  int GetPort() const { return std::stoi(firstLine_.substr(firstLine_.rfind(':') + 1)); }
  // Gives it a line on standard input.
  void Say(const std::string& line) {
    fputs((line + "\n").c_str(), input_);
    fflush(input_);
  }
  void EndInput() {
    if (input_ != nullptr) fclose(std::exchange(input_, nullptr));
  }
  // Sends the signal, 0 for none, and waits. The exit code; -1 when it did not end by itself.
  int End(int signal) {
    int status = 0;
    kill(pid_, signal);
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  // The next line that it writes, to stdout or stderr; "" when it has ended.
  std::string ReadLine() {
    char line[1000] = "";
    return fgets(line, sizeof line, output_) != nullptr ? line : "";
  }

 private:
  pid_t pid_ = -1;
  std::FILE* input_ = nullptr;
  std::FILE* output_ = nullptr;
  std::string firstLine_, warnings_;
};

// A connection to a virtual card of its own.
class CardConnection {
 public:
  explicit CardConnection(std::vector<std::string> arguments = {}) : card_(std::move(arguments)) {}
  operator std::int32_t() const { return connection_; }

 private:
  const CardProcess card_;
  const Connection connection_{card_.GetPort()};
};

}  // namespace VELTRO::KELVO::Test
