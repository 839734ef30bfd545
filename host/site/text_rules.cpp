// What any text of a site has to be. Tested by tests/unit/host/site_check_test.cpp.
#include <string>
#include <vector>

#include "host/site/rules.h"
#include "host/text/encoding.h"
#include "host/text/printable.h"

namespace host {
namespace {

std::vector<const SaidText*> TextsOf(const Site& site) {
    std::vector<const SaidText*> texts;
    for (const SiteNode& node : site.nodes) {
        texts.push_back(&node.name);
    }
    for (const Port& port : site.ports) {
        texts.insert(texts.end(),
                     {&port.name, &port.device, &port.node, &port.init, &port.reset,
                      &port.pager.dial, &port.pager.prompt, &port.sms1.dial, &port.sms2.dial});
    }
    for (const Pager& pager : site.pagers) {
        texts.insert(texts.end(), {&pager.description, &pager.owner, &pager.port, &pager.node,
                                   &pager.number, &pager.hours});
    }
    for (const TimeModel& model : site.timeModels) {
        texts.push_back(&model.name);
    }
    for (const Route& route : site.routes) {
        texts.push_back(&route.groups);
    }
    return texts;
}

// A zero would end the text early, a carriage return the modem's command.
void CheckControls(const SaidText& text, Findings& findings) {
    for (const char c : text.value) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            findings.Error(text.line,
                           "the text " + InQuotes(text.value) + " holds the control character " +
                               NameOf(FirstCharacter({&c, 1}), {&c, 1}),
                           "It would cut the text or the modem's command short.",
                           "Take the character out.");
            return;
        }
    }
}

void CheckEncodable(const SaidText& text, Encoding encoding, Findings& findings) {
    try {
        Encode(text.value, encoding);
    } catch (const NotEncodable& character) {
        findings.Error(text.line,
                       "the text " + InQuotes(text.value) + " holds " + character.what() +
                           ", which " + std::string(WordFor(encoding)) + " doesn't have",
                       "The character has no bytes on this site's lines.",
                       "Write the text without it, or choose another encoding at the top.");
    }
}

}  // namespace

void CheckTexts(const Site& site, Findings& findings) {
    const std::optional<Encoding> encoding = EncodingNamed(site.encoding.value);
    if (!encoding) {
        findings.Error(site.encoding.line, "there is no encoding " + InQuotes(site.encoding.value),
                       "It could not be told which bytes the texts have on the lines.",
                       "Write \"latin1\", or \"shift_jis\" for kana on NTT pagers.");
    }
    for (const Command& command : {site.notify, site.heartbeat}) {
        for (const SaidText& word : command) {
            CheckControls(word, findings);
        }
    }
    for (const SaidText* text : TextsOf(site)) {
        CheckControls(*text, findings);
        if (encoding) {
            CheckEncodable(*text, *encoding, findings);
        }
    }
}

}  // namespace host
