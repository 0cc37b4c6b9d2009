#include "console/StandardInput.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <exception>

#include "base/Log.h"
#include "base/TrimmedText.h"
#include "console/InputSetting.h"
#include "lists/VariableId.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;

namespace {

// Ends a read that got hold of nothing, because another process that reads the same input was faster.
constexpr int InterruptSignal = SIGUSR1;
constexpr std::chrono::milliseconds InterruptInterval{10};
constexpr int BackgroundMs = 1000;

void HandleInterrupts() {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  sigaction(InterruptSignal, &action, nullptr);
}

void ChooseSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, InterruptSignal);
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  // Without this the terminal would stop the whole program for reading in the background.
  sigemptyset(&signals);
  sigaddset(&signals, SIGTTIN);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

// The first word; `text` becomes what is behind it.
std::string_view TakeWord(std::string_view& text) {
  const std::string_view word = text.substr(0, text.find_first_of(" \t"));
  text = Trimmed(text.substr(word.size()));
  return word;
}

bool SetInput(Card& card, std::string_view text) {
  const std::string_view port = TakeWord(text);
  const auto input = ParseInput(port, text);
  if (input) card.Ports.SetLevels(input->Port, input->Bits);
  return input.has_value();
}

void TellFaults(Faults& faults) {
  const auto entries = faults.List();
  if (entries.empty()) LogLine("There are no faults.");
  for (const Faults::Entry& entry : entries) {
    LogLine({"Fault ", entry.Text, ": befell ", std::to_string(entry.Befell), " of ",
             std::to_string(entry.Calls)});
  }
}

bool Obey(Card& card, std::string_view text) {
  const std::string_view word = TakeWord(text);
  if (word == "input") return SetInput(card, text);
  if (word == "fault") {
    text.empty() ? TellFaults(card.FaultsOnRequest) : card.FaultsOnRequest.Set(text);
    return true;
  }
  if (word == "signal" && !text.empty()) {
    card.Variables.SetSignal(ClientLib::VariableId(text), true);
    return true;
  }
  if (!text.empty()) return false;
  if (word == "start") card.Inputs.Start();
  if (word == "resume") card.Inputs.Resume();
  return word == "start" || word == "resume";
}

bool TryToObey(Card& card, std::string_view text) noexcept {
  try {
    return Obey(card, text);
  } catch (const std::exception& error) {
    LogLine({"'", text, "' failed: ", error.what()});
    return true;
  }
}

}  // namespace

StandardInput::StandardInput(Card& card) : card_(card) {
  line_.reserve(MostLineBytes);
  HandleInterrupts();
  thread_ = std::thread([this] { Work(); });
}

StandardInput::~StandardInput() {
  {
    MutexLock lock(mutex_);
    stopping_ = true;
    wake_.Signal();
    while (!ended_) {
      changed_.WaitUntil(lock, std::chrono::steady_clock::now() + InterruptInterval);
      if (!ended_) pthread_kill(thread_.native_handle(), InterruptSignal);
    }
  }
  thread_.join();
}

void StandardInput::Work() {
  ChooseSignals();
  ReadAll();
  const MutexLock lock(mutex_);
  ended_ = true;
  changed_.NotifyAll();
}

bool StandardInput::IsStopping() {
  const MutexLock lock(mutex_);
  return stopping_;
}

void StandardInput::ReadAll() {
  while (!IsStopping()) {
    pollfd entries[] = {{STDIN_FILENO, POLLIN, 0}, {wake_.Get(), POLLIN, 0}};
    if (poll(entries, 2, -1) <= 0 || entries[0].revents == 0) continue;
    char bytes[4096];
    const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
    if (count > 0) {
      Take({bytes, static_cast<std::size_t>(count)});
    } else if (count < 0 && errno == EIO) {  // in the background of a terminal: perhaps not for long
      poll(entries + 1, 1, BackgroundMs);
    } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
      return EndLine();
    }
  }
}

void StandardInput::Take(std::string_view bytes) {
  for (const char byte : bytes) {
    if (byte == '\n') {
      EndLine();
    } else if (line_.size() < MostLineBytes) {
      line_ += byte;
    }
  }
}

void StandardInput::EndLine() {
  const std::string_view text = Trimmed(line_);
  if (!text.empty() && (line_.size() == MostLineBytes || !TryToObey(card_, text))) {
    LogLine(
        {"Standard input takes 'input PORT VALUE', 'start', 'signal NAME', 'resume' and 'fault TEXT', not '",
         text, "'."});
  }
  line_.clear();
}

}  // namespace VELTRO::KELVO::VirtualCard
