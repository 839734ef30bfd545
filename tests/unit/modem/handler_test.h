// The fixture of tests around the modem handler: virtual time, a database, a folder of its own for
// the trace, and the handler when a test makes it.
#ifndef PAGERFWD_TESTS_UNIT_MODEM_HANDLER_TEST_H
#define PAGERFWD_TESTS_UNIT_MODEM_HANDLER_TEST_H

#include <memory>
#include <string>

#include "modem/COMHdl.h"
#include "sim/testing.h"
#include "tests/support/store_test.h"
#include "tests/support/temp_dir.h"
#include "tests/support/trace.h"

class HandlerTest : public test_support::StoreTest {
 protected:
    using Cells = test_support::MemoryStore::Cells;

    static constexpr const char* kPorts = "AlarmFwd_COMProperties";

    void TearDown() override {
        handler.reset();
        StoreTest::TearDown();
    }

    // A modem port with settings of its own for each group of protocols, but for the changes.
    void AddPort(const std::string& description, const Cells& changes = {}) {
        store.Insert(kPorts, {{"Description", description},
                              {"Baud", "2400"},
                              {"PagerData", "8"},
                              {"PagerParity", "None"},
                              {"PagerStop", "1"},
                              {"Flow", "None"},
                              {"Select", "1"},
                              {"Init", "AT&F0"},
                              {"Reset", "ATZ0"},
                              {"PagerDial", "ATDT0,5550110"},
                              {"PagerActivity", "#"},
                              {"SMS1Dial", "ATDT0,5550111"},
                              {"SMS1Protocol", "TAP"},
                              {"SMS1Data", "7"},
                              {"SMS1Parity", "Even"},
                              {"SMS1Stop", "1"},
                              {"SMS2Dial", "ATDT0,5550112"},
                              {"SMS2Protocol", "UCP"},
                              {"SMS2Data", "8"},
                              {"SMS2Parity", "odd"},
                              {"SMS2Stop", "2"}});
        if (!changes.empty()) {
            store.Update(kPorts, {"Description", description}, changes);
        }
    }

    // Replaces the one before.
    void MakeHandler() {
        handler.reset();
        handler = std::make_unique<CCOMHdl>(test_support::MemoryStore::kDatabase);
    }

    void MakeTracingHandler() {
        const test_support::TraceSwitch tracing;
        MakeHandler();
    }

    pagersim::VirtualClock clock;
    test_support::TempDir folder;
    std::unique_ptr<CCOMHdl> handler;
};

#endif
