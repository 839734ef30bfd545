// What of a port's records a protocol uses.
// Tested by tests/unit/modem/protocol_group_test.cpp.

#include "modem/protocol_group.h"

namespace {

constexpr ProtocolGroup kPagers = {&ComPort::pagerParity, &ComPort::pagerData, &ComPort::pagerStop,
                                   &ModemSet::dialPrefix};
constexpr ProtocolGroup kFirstSms = {&ComPort::sms1Parity, &ComPort::sms1Data, &ComPort::sms1Stop,
                                     &ModemSet::sms1Number};
constexpr ProtocolGroup kSecondSms = {&ComPort::sms2Parity, &ComPort::sms2Data, &ComPort::sms2Stop,
                                      &ModemSet::sms2Number};

}  // namespace

const ProtocolGroup* FindProtocolGroup(unsigned char protocol) {
    switch (protocol) {
        case kSignalPager:
        case kNumericPager:
        case kAlphanumericPager:
        case kNTTPager:
            return &kPagers;
        case kFirstSmsService:
            return &kFirstSms;
        case kSecondSmsService:
            return &kSecondSms;
        default:
            return nullptr;
    }
}

CString DialCommand(const ModemSet& modem, unsigned char protocol, const CString& number) {
    const ProtocolGroup* group = FindProtocolGroup(protocol);
    return group != nullptr ? modem.*group->dialCommand + number : number;
}
