// Properties of a COM port: which row, which columns, and in which order the table is asked.
#include "tables/com_ports.h"

#include "tests/support/store_test.h"
#include "tests/unit/tables/records.h"

namespace {

using test_support::Call;
using test_support::MemoryStore;

constexpr char kPortTable[] = "AlarmFwd_COMProperties";

class ComPorts : public test_support::StoreTest {
 protected:
    CDB_ComPorts ports{MemoryStore::kDatabase};
};

struct TextField {
    const char* column;
    char* DBComPort::*field;
};
constexpr TextField kTextFields[] = {
    {"Baud", &DBComPort::baud},
    {"PagerData", &DBComPort::pagerData},
    {"PagerParity", &DBComPort::pagerParity},
    {"PagerStop", &DBComPort::pagerStop},
    {"Flow", &DBComPort::flow},
    {"SMS1Parity", &DBComPort::sms1Parity},
    {"SMS1Stop", &DBComPort::sms1Stop},
    {"SMS1Data", &DBComPort::sms1Data},
    {"SMS2Parity", &DBComPort::sms2Parity},
    {"SMS2Stop", &DBComPort::sms2Stop},
    {"SMS2Data", &DBComPort::sms2Data},
};

struct ModemField {
    const char* column;
    char* DBComPortModem::*field;
};
constexpr ModemField kModemFields[] = {
    {"Init", &DBComPortModem::init},
    {"Reset", &DBComPortModem::reset},
    {"PagerDial", &DBComPortModem::pagerDial},
    {"PagerActivity", &DBComPortModem::pagerActivity},
    {"SMS1Dial", &DBComPortModem::sms1Dial},
    {"SMS1Protocol", &DBComPortModem::sms1Protocol},
    {"SMS2Dial", &DBComPortModem::sms2Dial},
    {"SMS2Protocol", &DBComPortModem::sms2Protocol},
    {"SMS1Restrict", &DBComPortModem::sms1Restrict},
    {"SMS2Restrict", &DBComPortModem::sms2Restrict},
};

// A row whose cells say in which column they stand.
MemoryStore::Cells TellingRow(const std::string& description) {
    MemoryStore::Cells cells = {{"Description", description}, {"Select", "1"}};
    for (const TextField& each : kTextFields) {
        cells.emplace_back(each.column, std::string("cell of ") + each.column);
    }
    for (const ModemField& each : kModemFields) {
        cells.emplace_back(each.column, std::string("cell of ") + each.column);
    }
    return cells;
}

TEST_F(ComPorts, FillsEveryFieldFromItsOwnColumn) {
    store.Insert(kPortTable, TellingRow("COM 3"));

    const auto port = Hold(ports.FindComPort("COM 3"));

    ASSERT_NE(nullptr, port);
    EXPECT_EQ("COM 3", Text(port->description));
    EXPECT_TRUE(port->select);
    EXPECT_EQ(0, port->unused);
    for (const TextField& each : kTextFields) {
        EXPECT_EQ(std::string("cell of ") + each.column, Text(port.get()->*each.field));
    }
    for (const ModemField& each : kModemFields) {
        EXPECT_EQ(std::string("cell of ") + each.column, Text(port->modem->*each.field));
    }
}

TEST_F(ComPorts, AsksForAllColumnsBeforeItFreesTheRow) {
    store.Insert(kPortTable, TellingRow("COM 3"));

    Hold(ports.FindComPort("COM 3"));

    const Lines expected =
        Lines{"Open(alarms, 'n')", "TableOpen(AlarmFwd_COMProperties)",
              "GetAllEntriesByCondition(AlarmFwd_COMProperties, Description = \"COM 3\") -> 1"} +
        LookUps(kPortTable, {"Baud -> 2",           "Flow -> 3",      "Select -> 1",
                             "Init -> 7",           "Reset -> 8",     "PagerData -> 4",
                             "PagerParity -> 5",    "PagerStop -> 6", "PagerDial -> 9",
                             "PagerActivity -> 22", "SMS1Data -> 10", "SMS1Parity -> 11",
                             "SMS1Stop -> 12",      "SMS1Dial -> 13", "SMS1Protocol -> 14",
                             "SMS1Restrict -> 15",  "SMS2Data -> 16", "SMS2Parity -> 17",
                             "SMS2Stop -> 18",      "SMS2Dial -> 19", "SMS2Protocol -> 20",
                             "SMS2Restrict -> 21"}) +
        Lines{"Free()", "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(ComPorts, UnknownPortIsNullAndTheDatabaseIsClosed) {
    store.Insert(kPortTable, TellingRow("COM 3"));

    EXPECT_EQ(nullptr, ports.FindComPort("COM 4"));

    const Lines expected = {
        "Open(alarms, 'n')", "TableOpen(AlarmFwd_COMProperties)",
        "GetAllEntriesByCondition(AlarmFwd_COMProperties, Description = \"COM 4\") -> 0",
        "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(ComPorts, FirstOfTwoRowsWins) {
    store.Insert(kPortTable, {{"Description", "COM 3"}, {"Baud", "2400"}});
    store.Insert(kPortTable, {{"Description", "COM 3"}, {"Baud", "9600"}});

    const auto port = Hold(ports.FindComPort("COM 3"));

    ASSERT_NE(nullptr, port);
    EXPECT_EQ("2400", Text(port->baud));
}

TEST_F(ComPorts, SelectLooksAtTheFirstCharacterOnly) {
    const struct {
        MemoryStore::Cell cell;
        bool expected;
        const char* why;
    } cases[] = {
        {"1", true, "the usual mark"},  {"10", true, "begins with 1"},
        {"0", false, "the usual mark"}, {"", false, "empty"},
        {"01", false, "begins with 0"}, {" 1", false, "begins with a blank"},
        {"yes", false, "another word"}, {std::nullopt, false, "a cell without a text"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.why);
        store.Delete(kPortTable, {"Description", "COM 1"});
        store.Insert(kPortTable, {{"Description", "COM 1"}, {"Select", each.cell}});
        const auto port = Hold(ports.FindComPort("COM 1"));
        ASSERT_NE(nullptr, port);
        EXPECT_EQ(each.expected, port->select);
    }
}

TEST_F(ComPorts, MissingColumnsLeaveNullAndFalse) {
    store.AddTable(kPortTable, {"Flow", "Description"});
    store.Insert(kPortTable, {{"Description", "COM 1"}, {"Flow", "None"}});

    const auto port = Hold(ports.FindComPort("COM 1"));

    ASSERT_NE(nullptr, port);
    EXPECT_EQ("COM 1", Text(port->description));
    EXPECT_EQ("None", Text(port->flow));
    EXPECT_FALSE(port->select);
    for (const TextField& each : kTextFields) {
        if (std::string(each.column) != "Flow") {
            EXPECT_EQ(nullptr, port.get()->*each.field) << each.column;
        }
    }
    for (const ModemField& each : kModemFields) {
        EXPECT_EQ(nullptr, port->modem->*each.field) << each.column;
    }
    EXPECT_EQ(22U, store.Calls(Call::kGetElementColumn).size());
}

TEST_F(ComPorts, CellWithoutTextLeavesNull) {
    store.Insert(kPortTable,
                 {{"Description", "COM 1"}, {"Baud", std::nullopt}, {"Init", std::nullopt}});

    const auto port = Hold(ports.FindComPort("COM 1"));

    ASSERT_NE(nullptr, port);
    EXPECT_EQ(nullptr, port->baud);
    EXPECT_EQ(nullptr, port->modem->init);
    EXPECT_EQ("", Text(port->flow));
}

TEST_F(ComPorts, DescriptionIsTheOneAskedForNotTheCell) {
    store.Insert(kPortTable, {{"Description", "COM 1"}});
    std::string asked = "COM 1";

    const auto port = Hold(ports.FindComPort(asked.c_str()));
    asked = "gone!";

    ASSERT_NE(nullptr, port);
    EXPECT_EQ("COM 1", Text(port->description));
    EXPECT_EQ(Lines{}, store.CallsWith("GetElementColumn(AlarmFwd_COMProperties, Description)"));
}

TEST_F(ComPorts, LongTextsAreCopiedWhole) {
    const std::string longText(70000, 'x');
    store.Insert(kPortTable, {{"Description", longText}, {"Init", longText}});

    const auto port = Hold(ports.FindComPort(longText.c_str()));

    ASSERT_NE(nullptr, port);
    EXPECT_EQ(longText, port->description);
    EXPECT_EQ(longText, port->modem->init);
}

}  // namespace
