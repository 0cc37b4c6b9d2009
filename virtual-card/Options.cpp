#include "Options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <limits>

#include "server/Session.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

constexpr int WrongUsage = 2;

constexpr const char* Description =
    "A KELVO controller card in software: takes connections, keeps command lists, runs them on a simulated\n"
    "clock and draws what the laser marked.\n";

std::string Footer() {
  return "Units: positions in field units (drawn as millimetres), speeds in field units per microsecond,\n"
         "delays and durations in microseconds.\n"
         "A request may have up to " +
         std::to_string(Session::MostBodyBytes >> 20) +
         " MiB; a connection that sends a longer one is closed.\n"
         "While it runs, the card takes lines on standard input: 'input PORT VALUE', 'start' (for "
         "WAIT_START),\n"
         "'signal NAME', 'resume' (after SUSPEND).\n"
         "Ctrl-C or SIGTERM ends the program.";
}

// A positive, finite number, or nothing.
std::optional<double> ParsePositive(const std::string& text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return std::isfinite(value) && value > 0 ? std::optional(value) : std::nullopt;
}

// Gives a number option that does not depend on the locale; `word`, if any, stands for infinity.
CLI::Option* AddPositive(CLI::App& app, const char* name, double& value, const char* help,
                         const std::string& word = {}) {
  const auto parse = [&value, word](const CLI::results_t& results) {
    const auto number = !word.empty() && results[0] == word
                            ? std::optional(std::numeric_limits<double>::infinity())
                            : ParsePositive(results[0]);
    if (number) value = *number;
    return number.has_value();
  };
  return app.add_option(name, parse, help);
}

void AddInputs(CLI::App& app, std::vector<InputSetting>& inputs) {
  const auto parse = [&inputs](const CLI::results_t& results) {
    for (const std::string& text : results) {
      const std::size_t equals = text.find('=');
      if (equals == std::string::npos) return false;
      const auto input = ParseInput(text.substr(0, equals), text.substr(equals + 1));
      if (!input) return false;
      inputs.push_back(*input);
    }
    return true;
  };
  app.add_option("--input", parse, "Bits of an input port, decimal or 0x and hexadecimal; may be repeated")
      ->type_name("PORT=VALUE")
      ->type_size(1)
      ->expected(1, -1)
      ->allow_extra_args(false);
}

}  // namespace

std::optional<Options> ParseOptions(int count, const char* const* arguments, int& exitCode) {
  Options options;
  CLI::App app(Description, "kelvo-virtual-card");
  app.footer(Footer());
  app.add_option("--address", options.Address, "IPv4 or IPv6 address to listen on")
      ->default_str("127.0.0.1; with --ssdp :: for all");
  app.add_option("--port", options.Port, "TCP port to listen on; 0 takes a free one")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  app.add_option("--firmware", options.Firmware, "Firmware version that the card tells")
      ->capture_default_str();
  app.add_option("--serial", options.Serial, "Serial number that the card tells")->capture_default_str();
  AddPositive(app, "--speed", options.Speed,
              "Times real time at which lists run, or 'max' for no waiting at all", "max")
      ->type_name("FACTOR")
      ->default_str("1");
  app.add_option("--svg", options.SvgFile, "Draw what the laser marked into this file after each run")
      ->type_name("FILE");
  AddPositive(app, "--beam", options.Beam, "Width of the laser's beam in the drawing, in field units")
      ->type_name("WIDTH")
      ->default_str("0.1");
  app.add_flag("--svg-all-runs", options.DrawAllRuns, "Draw all runs into one picture, not the latest alone");
  AddInputs(app, options.Inputs);
  app.add_option("--standalone-list", options.StandaloneList,
                 "The list that GOTO_STANDALONE_LIST branches to")
      ->type_name("ID");
  app.add_option("--state", options.StateDirectory,
                 "Directory for what clients have stored (default: none, it ends with the card)");
  app.add_option("--queue", options.Queue,
                 "Bytes of notifications that may wait for a client that does not read them; when there are "
                 "more, its connection is closed")
      ->capture_default_str();
  app.add_flag("--ssdp", options.Ssdp, "Answer those who search the network for cards");
  app.add_option("--ssdp-interface", options.SsdpInterfaces,
                 "Network interface on which to answer; may be repeated (default: all that take multicasts)")
      ->type_name("NAME")
      ->type_size(1)
      ->allow_extra_args(false)
      ->needs("--ssdp");
  app.add_flag("--verbose", options.Verbose, "Write every call to stderr");
  try {
    app.parse(count, arguments);
  } catch (const CLI::ParseError& error) {
    exitCode = app.exit(error) == 0 ? 0 : WrongUsage;
    return std::nullopt;
  }
  if (options.Address.empty()) options.Address = options.Ssdp ? "::" : "127.0.0.1";
  return options;
}

}  // namespace VELTRO::KELVO::VirtualCard
