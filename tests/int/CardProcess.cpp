#include "int/CardProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

namespace VELTRO::KELVO::Test {

namespace {

constexpr int PatienceMs = 20000;

std::string TemporaryFile(int& descriptor) {
  std::string name = "/tmp/kelvo-test-XXXXXX";
  descriptor = mkostemp(name.data(), O_CLOEXEC);
  return name;
}

}  // namespace

ChildProcess::ChildProcess(const char* program, std::vector<std::string> arguments) {
  int pipeEnds[2];
  if (pipe2(pipeEnds, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  output_ = pipeEnds[0];
  unlink(TemporaryFile(errors_).c_str());
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errors_, STDERR_FILENO);
  std::string name = program;
  std::vector<char*> argv{name.data()};
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  const int error = posix_spawn(&pid_, program, &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(pipeEnds[1]);
  if (error != 0) throw std::runtime_error("cannot start " + name);
}

ChildProcess::~ChildProcess() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  close(output_);
  close(errors_);
}

std::string ChildProcess::ReadLine() {
  std::string line;
  for (char character = 0;;) {
    pollfd entry{output_, POLLIN, 0};
    if (poll(&entry, 1, PatienceMs) != 1 || read(output_, &character, 1) != 1) return {};
    if (character == '\n') return line;
    line += character;
  }
}

void ChildProcess::Signal(int signal) {
  if (pid_ > 0) kill(pid_, signal);
}

int ChildProcess::WaitForExit() {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(PatienceMs);
  int status = 0;
  while (waitpid(pid_, &status, WNOHANG) != pid_) {
    if (std::chrono::steady_clock::now() > deadline) return -1;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string ChildProcess::ReadErrors() const {
  std::string text(1 << 16, '\0');
  const ssize_t size = pread(errors_, text.data(), text.size(), 0);
  text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  return text;
}

CardProcess::CardProcess(std::vector<std::string> arguments)
    : ChildProcess(VIRTUAL_CARD_PROGRAM, [&] {
        arguments.insert(arguments.begin(), {"--port", "0"});
        return std::move(arguments);
      }()) {
  const std::string line = ReadLine();
  const std::string head = "Listening on ";
  const std::size_t colon = line.rfind(':');
  if (!line.starts_with(head) || colon == std::string::npos) {
    throw std::runtime_error("The card said '" + line + "' and " + ReadErrors());
  }
  address_ = line.substr(head.size(), colon - head.size());
  port_ = std::stoi(line.substr(colon + 1));
}

CardProcess::~CardProcess() {
  if (!IsRunning()) return;
  Signal(SIGTERM);
  EXPECT_EQ(WaitForExit(), 0) << ReadErrors();
}

}  // namespace VELTRO::KELVO::Test
