#include "Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <type_traits>

#include "faults/Faults.h"
#include "server/Session.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

constexpr int WrongUsage = 2;
constexpr std::int64_t MostBytes = std::int64_t{1} << 40;

constexpr const char* Description =
    "A KELVO controller card in software: takes connections, keeps command lists, runs them on a simulated\n"
    "clock and draws what the laser marked.\n";

std::string Footer() {
  return "Units: positions in field units (drawn as millimetres), speeds in field units per microsecond,\n"
         "delays and durations in microseconds.\n"
         "A request may have up to " +
         std::to_string(Session::MostBodyBytes >> 20) +
         " MiB; a longer one is refused.\n"
         "While it runs, the card takes lines on standard input: 'input PORT VALUE', 'start' (for "
         "WAIT_START),\n"
         "'signal NAME', 'resume' (after SUSPEND), 'fault FAULT' (as --fault), 'fault TARGET:off', 'fault "
         "off', "
         "'fault' (tells them).\n"
         "Ctrl-C or SIGTERM ends the program.";
}

template <class Number>
bool Parse(const std::string& text, Number& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

[[noreturn]] void Refuse(const char* name, const std::string& text, const std::string& wanted) {
  throw CLI::ValidationError(name, "takes " + wanted + ", not '" + text + "'");
}

// A positive, finite number; `word`, if any, stands for infinity. No number of any option depends on the locale.
CLI::Option* AddPositive(CLI::App& app, const char* name, double& value, const char* help,
                         const std::string& word = {}) {
  const auto parse = [&value, name, word](const CLI::results_t& results) {
    const std::string& text = results[0];
    if (!word.empty() && text == word) {
      value = std::numeric_limits<double>::infinity();
    } else if (!Parse(text, value) || !std::isfinite(value) || value <= 0) {
      Refuse(name, text, "a positive, finite number" + (word.empty() ? "" : " or '" + word + "'"));
    }
    return true;
  };
  return app.add_option(name, parse, help);
}

// A whole number from `least` to `most`, decimal.
template <class Target>
CLI::Option* AddWhole(CLI::App& app, const char* name, Target& value, std::int64_t least, std::int64_t most,
                      const char* help) {
  const auto parse = [&value, name, least, most](const CLI::results_t& results) {
    std::int64_t number = 0;
    if (!Parse(results[0], number) || number < least || number > most) {
      Refuse(name, results[0],
             "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    if constexpr (std::is_integral_v<Target>) {
      value = static_cast<Target>(number);
    } else {
      value = static_cast<typename Target::value_type>(number);
    }
    return true;
  };
  return app.add_option(name, parse, help);
}

void AddInputs(CLI::App& app, std::vector<InputSetting>& inputs) {
  const auto parse = [&inputs](const CLI::results_t& results) {
    for (const std::string& text : results) {
      const std::size_t equals = std::min(text.find('='), text.size());
      const auto input = ParseInput(text.substr(0, equals), text.substr(std::min(equals + 1, text.size())));
      if (!input) Refuse("--input", text, "PORT=VALUE, two numbers of 32 bits");
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

void AddWires(CLI::App& app, std::vector<Simulation::Wire>& wires) {
  const auto parse = [&wires](const CLI::results_t& results) {
    for (const std::string& text : results) {
      const auto wire = ParseWire(text);
      if (!wire) {
        Refuse("--wire", text, "PORT.PIN=PORT.PIN, from an output to an input, ports 0 to 7, pins 0 to 31");
      }
      const auto leads = [&](const Simulation::Wire& other) { return other.To == wire->To; };
      if (std::ranges::any_of(wires, leads)) {
        throw CLI::ValidationError("--wire", "two wires lead to the input of '" + text + "'");
      }
      wires.push_back(*wire);
    }
    return true;
  };
  app.add_option("--wire", parse, "A wire from an output pin to an input pin; may be repeated")
      ->type_name("PORT.PIN=PORT.PIN")
      ->type_size(1)
      ->expected(1, -1)
      ->allow_extra_args(false);
}

void AddFaults(CLI::App& app, std::vector<std::string>& faults) {
  const auto parse = [&faults](const CLI::results_t& results) {
    for (const std::string& text : results) {
      try {
        ParseFault(text);
      } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--fault", error.what());
      }
      faults.push_back(text);
    }
    if (faults.size() > Faults::Most) {
      throw CLI::ValidationError("--fault", "there are at most " + std::to_string(Faults::Most) + " at once");
    }
    return true;
  };
  app.add_option("--fault", parse,
                 "A fault of the card, such as 'SetList:error=Out of memory'; may be repeated")
      ->type_name("TARGET[:CONDITION...]:ACTION")
      ->type_size(1)
      ->expected(1, -1)
      ->allow_extra_args(false);
}

void AddPage(CLI::App& app, Options& options) {
  auto* const http = AddWhole(app, "--http", options.HttpPort, 0, 65535,
                              "Serve a page that shows the card at work on this TCP port; 0 takes a free one")
                         ->type_name("PORT");
  app.add_option("--http-address", options.HttpAddress, "IPv4 or IPv6 address to serve the page on")
      ->type_name("ADDRESS")
      ->capture_default_str()
      ->needs(http);
  app.add_option("--http-host", options.HttpHosts,
                 "Name by which browsers may ask for the page, besides the address; may be repeated")
      ->type_name("NAME")
      ->type_size(1)
      ->allow_extra_args(false)
      ->needs(http);
}

void AddReplay(CLI::App& app, Options& options) {
  app.add_option("--replay", options.ReplayFile,
                 "Be no card of its own but answer from this recorded session (docs/session.md)")
      ->type_name("FILE")
      ->excludes("--http")
      ->excludes("--fault");
  app.add_flag("--strict", options.IsStrictReplay,
               "Give no answer more often than it was recorded, also to who asks again and again")
      ->needs("--replay");
  AddPositive(app, "--replay-speed", options.ReplaySpeed,
              "Times recorded time at which notifications come, or 'max' for no waiting at all", "max")
      ->type_name("FACTOR")
      ->default_str("1")
      ->needs("--replay");
}

}  // namespace

std::optional<Options> ParseOptions(int count, const char* const* arguments, int& exitCode) {
  Options options;
  CLI::App app(Description, "kelvo-virtual-card");
  app.footer(Footer());
  app.add_option("--address", options.Address, "IPv4 or IPv6 address to listen on")
      ->default_str("127.0.0.1; with --ssdp :: for all");
  AddWhole(app, "--port", options.Port, 0, 65535, "TCP port to listen on; 0 takes a free one")
      ->type_name("PORT")
      ->default_str(std::to_string(options.Port));
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
  AddWires(app, options.Wires);
  app.add_option(
         "--serial-port", options.SerialPort,
         "Terminal to connect serial port 0 with, or 'pty' for a pseudo-terminal of its own (default: none, "
         "it receives what it sends)")
      ->type_name("PATH");
  using Id = std::numeric_limits<std::int32_t>;
  AddWhole(app, "--standalone-list", options.StandaloneList, Id::min(), Id::max(),
           "The list that GOTO_STANDALONE_LIST branches to")
      ->type_name("ID");
  app.add_option("--state", options.StateDirectory,
                 "Directory for what clients have stored (default: none, it ends with the card)");
  AddWhole(app, "--queue", options.Queue, 0, MostBytes,
           "Bytes of notifications that may wait for a client that does not read them; when there are "
           "more, its connection is closed")
      ->type_name("BYTES")
      ->default_str(std::to_string(options.Queue));
  AddWhole(app, "--connections", options.Connections, 1, Options::MostConnections,
           "Connections that it serves at once; more are closed as they come")
      ->type_name("NUMBER")
      ->default_str(std::to_string(options.Connections));
  AddWhole(
      app, "--memory", options.Memory, 0, MostBytes,
      "Bytes that the lists, fonts and, without --state, files of all clients may have, and as many that "
      "clients leave unread; what goes beyond is refused")
      ->type_name("BYTES")
      ->default_str(std::to_string(options.Memory));
  AddFaults(app, options.Faults);
  options.FaultSeed = std::random_device()();
  AddWhole(app, "--fault-seed", options.FaultSeed, 0, std::numeric_limits<std::int64_t>::max(),
           "What the draws of faults by chance begin with, so that they come again")
      ->type_name("NUMBER")
      ->default_str("one of chance, which stderr tells");
  app.add_flag("--ssdp", options.Ssdp, "Answer those who search the network for cards");
  app.add_option("--ssdp-interface", options.SsdpInterfaces,
                 "Network interface on which to answer; may be repeated (default: all that take multicasts)")
      ->type_name("NAME")
      ->type_size(1)
      ->allow_extra_args(false)
      ->needs("--ssdp");
  AddPage(app, options);
  AddReplay(app, options);
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
