// Reading the exchange file. Tested by tests/unit/sim/exchange_file_test.cpp.
#include "sim/file/exchange_file.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

#include "sim/file/clock_file.h"
#include "sim/file/toml_table.h"
#include "sim/world/line_set.h"

namespace pagersim {
namespace {

constexpr std::string_view kPortExample = "\"COM 1\"";

// 1 to kLines for "COM 1" or "COM1", else 0.
int ComNumber(std::string_view port) {
    constexpr std::string_view kPrefix = "COM";
    if (port.substr(0, kPrefix.size()) != kPrefix) {
        return 0;
    }
    port.remove_prefix(kPrefix.size());
    if (!port.empty() && port.front() == ' ') {
        port.remove_prefix(1);
    }
    int com = 0;
    const char* const end = port.data() + port.size();
    const auto [behind, error] = std::from_chars(port.data(), end, com);
    const bool is_plain = error == std::errc() && behind == end && port.front() != '0';
    return is_plain && com >= 1 && com <= kLines ? com : 0;
}

void TakeInstant(TomlTable& table, const std::string& key, std::time_t& instant) {
    std::string text;
    if (!table.Take(key, text)) {
        return;
    }
    const auto parsed = ParseInstant(text);
    if (parsed) {
        instant = *parsed;
    } else {
        table.Mistake(key, "must be an instant, as \"2001-01-08 10:20:00\"");
    }
}

LineEntry ReadLine(TomlTable& table) {
    LineEntry line;
    ModemOptions& modem = line.modem;
    std::string port;
    table.Require("port", kPortExample);
    const bool is_text = table.Take("port", port);
    line.com = ComNumber(port);
    if (is_text && line.com == 0) {
        table.Mistake("port", "must be \"COM 1\" to \"COM 64\"");
    }
    TakeInstant(table, "there_from", line.there_from);
    TakeInstant(table, "there_until", line.there_until);
    table.Take("powered", modem.powered);
    table.Take("answer_delay_ms", modem.answer_delay);
    table.Take("answer_gap_ms", modem.answer_gap);
    table.TakeCount("answer_piece", modem.answer_piece);
    table.Take("piece_gap_ms", modem.piece_gap);
    table.TakeChoice<DtrDrop>("dtr", modem.dtr,
                              {{"&D0", DtrDrop::kIgnored},
                               {"&D1", DtrDrop::kEscapes},
                               {"&D2", DtrDrop::kHangsUp},
                               {"&D3", DtrDrop::kResets}});
    table.Take("guard_ms", modem.escape.guard);
    table.Take("guard_before", modem.escape.guard_before);
    table.Take("digit_ms", modem.dial.digit);
    table.Take("comma_ms", modem.dial.comma);
    table.Take("dial_tone", modem.phone.dial_tone);
    table.Take("training_ms", modem.phone.training);
    table.Take("carrier_wait_ms", modem.phone.carrier_wait);
    table.TakeChoice<Answer>("unknown_number", modem.phone.unknown_number,
                             {{"NO CARRIER", Answer::kNoCarrier},
                              {"NO ANSWER", Answer::kNoAnswer},
                              {"BUSY", Answer::kBusy}});
    if (table.Has("connect_speed")) {
        unsigned speed = 0;
        table.TakeCount("connect_speed", speed);
        modem.connect_speed = speed;
    }
    table.TakeCount("vanish_after", modem.vanish_after);
    table.Finish();
    return line;
}

TapOptions ReadTap(TomlTable& table) {
    TapOptions tap;
    table.Take("strict", tap.strict);
    table.Take("text_lines", tap.text_lines);
    table.Take("bare_ack", tap.bare_ack);
    table.TakeCount("knocks", tap.knocks, 1);
    table.Take("password", tap.password);
    table.Take("pagers", tap.pagers);
    table.TakeCount("answer", tap.answer);
    if (tap.answer != 0 && FindTapCode(tap.answer) == nullptr) {
        table.Mistake("answer", "is no code of TAP; write for example answer = 512 (try later)");
    }
    table.Take("ends", tap.ends);
    return tap;
}

UcpOptions ReadUcp(TomlTable& table) {
    constexpr int kLargestCode = 99;
    UcpOptions ucp;
    table.Take("strict", ucp.strict);
    table.Take("password", ucp.password);
    table.Take("pagers", ucp.pagers);
    table.TakeCount("answer", ucp.answer, 0, kLargestCode);
    table.TakeChoice<bool>("alphabet", ucp.gsm, {{"ascii", false}, {"gsm", true}});
    return ucp;
}

PlainOptions ReadPlain(TomlTable& table) {
    PlainOptions plain;
    table.Take("greeting", plain.greeting);
    table.Take("question", plain.question);
    table.Take("question_text", plain.question_text);
    table.Take("prompt", plain.prompt);
    table.Take("confirmation", plain.confirmation);
    table.Take("echo", plain.echo);
    table.Take("hangs_up", plain.hangs_up);
    return plain;
}

enum class Protocol { kNone, kTap, kUcp, kPlain, kNtt, kSignal };

CentreOptions ReadOptions(TomlTable& table, Protocol protocol) {
    switch (protocol) {
        case Protocol::kTap:
            return ReadTap(table);
        case Protocol::kUcp:
            return ReadUcp(table);
        case Protocol::kPlain:
            return ReadPlain(table);
        case Protocol::kNtt:
            return NttOptions{};
        case Protocol::kSignal:
        case Protocol::kNone:
            return SignalOptions{};
    }
    return SignalOptions{};
}

void ReadSubscriber(TomlTable& table, Subscriber& subscriber) {
    table.Require("name", "\"sms\"");
    table.Require("numbers", "[\"5550101\"]");
    table.Take("name", subscriber.name);
    table.Take("numbers", subscriber.numbers);
    for (const std::string& number : subscriber.numbers) {
        if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos) {
            table.Mistake("numbers",
                          "must be digits only, as they are dialled behind the outside "
                          "line's code; \"" +
                              number + "\" is not");
        }
    }
    table.TakeChoice<Fate>("calls", subscriber.fate,
                           {{"answered", Fate::kAnswered},
                            {"busy", Fate::kBusy},
                            {"no answer", Fate::kNoAnswer},
                            {"no carrier", Fate::kNoCarrier}});
    table.TakeCount("busy_calls", subscriber.busy_calls);
    table.Take("answers_after_ms", subscriber.answers_after);
    table.Take("response_ms", subscriber.response);
    table.TakeCount("speed", subscriber.speed);
}

void ReadFaults(TomlTable& table, Faults& faults) {
    table.Take("late_ms", faults.late);
    if (table.Has("silent_after")) {
        unsigned words = 0;
        table.TakeCount("silent_after", words);
        faults.silent_after = words;
    }
    table.TakeCount("drop_after_hearing", faults.drop_after_hearing);
    table.TakeCount("drop_after_saying", faults.drop_after_saying);
    table.TakeCount("noise", faults.noise);
}

CentreEntry ReadCentre(TomlTable& table) {
    CentreEntry centre;
    Protocol protocol = Protocol::kNone;
    table.Require("protocol", "\"tap\"");
    table.TakeChoice<Protocol>("protocol", protocol,
                               {{"tap", Protocol::kTap},
                                {"ucp", Protocol::kUcp},
                                {"plain", Protocol::kPlain},
                                {"ntt", Protocol::kNtt},
                                {"signal", Protocol::kSignal}});
    ReadSubscriber(table, centre.subscriber);
    ReadFaults(table, centre.faults);
    centre.options = ReadOptions(table, protocol);
    centre.subscriber.has_modem = protocol != Protocol::kNtt && protocol != Protocol::kSignal;
    if (protocol != Protocol::kNone) {
        table.Finish();
    }
    return centre;
}

Expectation ReadExpectation(TomlTable& table) {
    Expectation expected;
    table.Require("centre", "\"sms\"");
    table.Require("recipient", "\"123\"");
    table.Take("centre", expected.centre);
    table.Take("recipient", expected.recipient);
    table.Take("text", expected.text);
    table.Finish();
    return expected;
}

PlannedCommand ReadCommand(TomlTable& table) {
    PlannedCommand command;
    table.Require("time", "\"2001-01-08 10:20:00\"");
    table.Require("run", "\"pagerfwd alarm ack 1\"");
    TakeInstant(table, "time", command.time);
    table.Take("run", command.run);
    table.Finish();
    return command;
}

// Reads the tables [[name]] and checks each against those before it.
class Reader {
 public:
    Reader(const toml::table& root, const std::string& path, ExchangeFile& file)
        : root_(root), path_(path), file_(file) {}

    void Read() {
        ForEach("line", [this](TomlTable& table) { AddLine(table); });
        ForEach("centre", [this](TomlTable& table) { AddCentre(table); });
        ForEach("expect", [this](TomlTable& table) { AddExpectation(table); });
        ForEach("at", [this](TomlTable& table) { file_.commands.push_back(ReadCommand(table)); });
        for (const auto& [key, node] : root_) {
            if (asked_for_.count(std::string(key.str())) == 0) {
                Tell(node.source().begin.line,
                     "no such table: " + std::string(key.str()) +
                         "; write [[line]], [[centre]], [[expect]] or [[at]]");
            }
        }
        if (file_.lines.empty()) {
            Tell(1, "there is no line; write [[line]] and port = \"COM 1\"");
        }
    }

 private:
    template <typename Add>
    void ForEach(const std::string& name, Add add) {
        asked_for_.insert(name);
        const toml::node* const node = root_.get(name);
        if (node == nullptr) {
            return;
        }
        if (!node->is_array_of_tables()) {
            Tell(node->source().begin.line,
                 name + " must be a list of tables; write [[" + name + "]] in double brackets");
            return;
        }
        for (const toml::node& one : *node->as_array()) {
            TomlTable table(*one.as_table(), path_, "[[" + name + "]]", file_.mistakes);
            add(table);
        }
    }

    void AddLine(TomlTable& table) {
        const LineEntry line = ReadLine(table);
        if (line.com != 0 && !ports_.insert(line.com).second) {
            table.Mistake("port", "is taken by a line above; each has a port of its own");
        }
        file_.lines.push_back(line);
    }

    void AddCentre(TomlTable& table) {
        const CentreEntry centre = ReadCentre(table);
        if (!names_.insert(centre.subscriber.name).second) {
            table.Mistake("name", "is taken by a centre above; each has a name of its own");
        }
        for (const std::string& number : centre.subscriber.numbers) {
            if (!numbers_.insert(number).second) {
                table.Mistake("numbers", "\"" + number + "\" leads to a centre already");
            }
        }
        file_.centres.push_back(centre);
    }

    void AddExpectation(TomlTable& table) {
        const Expectation expected = ReadExpectation(table);
        if (!expected.centre.empty() && names_.count(expected.centre) == 0) {
            table.Mistake("centre", "names no [[centre]] of this file");
        }
        file_.expectations.push_back(expected);
    }

    void Tell(toml::source_index line, const std::string& what) {
        file_.mistakes.push_back(path_ + ":" + std::to_string(line) + ": " + what);
    }

    const toml::table& root_;
    const std::string& path_;
    ExchangeFile& file_;
    std::set<std::string> asked_for_, names_, numbers_;
    std::set<int> ports_;
};

}  // namespace

bool LineEntry::IsThereAt(std::time_t instant) const {
    const bool has_come = instant >= there_from;
    const bool has_gone = there_until != 0 && instant >= there_until;
    return there_until < there_from && there_until != 0 ? has_come || !has_gone
                                                        : has_come && !has_gone;
}

ExchangeFile ReadExchangeFile(std::string_view text, const std::string& path) {
    ExchangeFile file;
    const toml::parse_result parsed = toml::parse(text, path);
    if (!parsed) {
        const toml::parse_error& error = parsed.error();
        file.mistakes.push_back(path + ":" + std::to_string(error.source().begin.line) + ": " +
                                std::string(error.description()));
        return file;
    }
    Reader(parsed.table(), path, file).Read();
    return file;
}

ExchangeFile LoadExchangeFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream) {
        ExchangeFile file;
        file.mistakes.push_back(path + ": can't be read: " + std::strerror(errno));
        return file;
    }
    return ReadExchangeFile(text.str(), path);
}

ExchangeFile LoadSoundExchange(const std::string& path) {
    ExchangeFile file = LoadExchangeFile(path);
    std::string all;
    for (const std::string& mistake : file.mistakes) {
        all += (all.empty() ? "" : "\npagersim: ") + mistake;
    }
    if (!all.empty()) {
        throw std::runtime_error(all);
    }
    return file;
}

std::vector<std::string> CentreNames(const ExchangeFile& file) {
    std::vector<std::string> names;
    for (const CentreEntry& centre : file.centres) {
        names.push_back(centre.subscriber.name);
    }
    return names;
}

}  // namespace pagersim
