// The library's texts and lists against those of the standard library.
#include <cstdio>
#include <list>
#include <memory>
#include <string>

#include "bench/measure.h"
#include "linux/XList.h"
#include "linux/XString.h"

namespace bench {
namespace {

constexpr const char* kText =
    "operators/Critical/PLANT-SRV-2/Boiler 2: the pressure is 9.3 bar, the limit is 9.0 bar; "
    "valve 17 does not answer, pump 3 % is off";
constexpr const char* kPiece = "the pressure is 9.3 bar";
constexpr int kPieces = 20;
constexpr int kElements = 1000;

// Runs `work` once for each round of the measure; its result is not optimised away.
template <typename Work>
Run Each(Work work) {
    return [work](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            auto result = work();
            benchmark::DoNotOptimize(result);
        }
    };
}

template <typename Text>
Text Joined() {
    Text joined;
    for (int i = 0; i < kPieces; ++i) {
        joined += kPiece;
    }
    return joined;
}

size_t ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
    size_t count = 0;
    for (size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
        ++count;
    }
    return count;
}

void CompareTexts() {
    Compare("text: make from characters", Each([] { return CString(kText); }),
            Each([] { return std::string(kText); }));
    const auto ours = std::make_shared<CString>(kText);
    const auto reference = std::make_shared<std::string>(kText);
    Compare("text: copy", Each([ours] { return CString(*ours); }),
            Each([reference] { return std::string(*reference); }));
    Compare("text: copy and change", Each([ours] {
                CString copy(*ours);
                copy.SetAt(0, 'O');
                return copy;
            }),
            Each([reference] {
                std::string copy(*reference);
                copy[0] = 'O';
                return copy;
            }));
    Compare("text: append 20 pieces", Each(Joined<CString>), Each(Joined<std::string>));
    Compare("text: find a character", Each([ours] { return ours->Find('%'); }),
            Each([reference] { return reference->find('%'); }));
    Compare("text: find a text", Each([ours] { return ours->Find("valve 17"); }),
            Each([reference] { return reference->find("valve 17"); }));
    Compare("text: replace a text, 6 times", Each([ours] {
                CString copy(*ours);
                return copy.Replace("e ", "E, ");
            }),
            Each([reference] {
                std::string copy(*reference);
                return ReplaceAll(copy, "e ", "E, ");
            }));
    Compare("text: cut a part out", Each([ours] { return ours->Mid(10, 60); }),
            Each([reference] { return reference->substr(10, 60); }));
    Compare("text: compare", Each([ours] { return *ours == kText; }),
            Each([reference] { return *reference == kText; }));
}

void CompareFormat() {
    Compare("text: format", Each([] {
                CString text;
                text.Format("%s/%d/%s %04x", "operators", 7, kPiece, 255);
                return text;
            }),
            Each([] {
                char text[128];
                const int length =
                    std::snprintf(text, sizeof text, "%s/%d/%s %04x", "operators", 7, kPiece, 255);
                return std::string(text, static_cast<size_t>(length));
            }));
}

void* Element(int number) {
    static int elements[kElements];
    return &elements[number];
}

void CompareLists() {
    Compare("list: fill with 1,000 and empty", Each([] {
                CPtrList list;
                for (int i = 0; i < kElements; ++i) {
                    list.AddTail(Element(i));
                }
                return list.GetCount();
            }),
            Each([] {
                std::list<void*> list;
                for (int i = 0; i < kElements; ++i) {
                    list.push_back(Element(i));
                }
                return list.size();
            }));
    const auto ours = std::make_shared<CPtrList>();
    const auto reference = std::make_shared<std::list<void*>>();
    for (int i = 0; i < kElements; ++i) {
        ours->AddTail(Element(i));
        reference->push_back(Element(i));
    }
    Compare("list: walk over 1,000", Each([ours] {
                uintptr_t sum = 0;
                for (POSITION next = ours->GetHeadPosition(); next != nullptr;) {
                    sum += reinterpret_cast<uintptr_t>(ours->GetNext(next));
                }
                return sum;
            }),
            Each([reference] {
                uintptr_t sum = 0;
                for (void* element : *reference) {
                    sum += reinterpret_cast<uintptr_t>(element);
                }
                return sum;
            }));
    Compare("list: head to tail", Each([ours] {
                ours->AddTail(ours->RemoveHead());
                return ours->GetCount();
            }),
            Each([reference] {
                void* element = reference->front();
                reference->pop_front();
                reference->push_back(element);
                return reference->size();
            }));
}

}  // namespace
}  // namespace bench

void RegisterRows() {
    bench::CompareTexts();
    bench::CompareFormat();
    bench::CompareLists();
}
