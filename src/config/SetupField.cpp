#include "config/SetupField.h"

namespace zav {

std::string& FieldText(SetupRecord& r, SetupField field) {
    switch (field) {
    case SetupField::Tester:
        return r.Tester;
    case SetupField::Location:
        return r.Location;
    case SetupField::lat:
        return r.lat;
    case SetupField::lon:
        return r.lon;
    case SetupField::Environment:
        return r.Environment;
    case SetupField::Frequency:
        return r.Frequency;
    case SetupField::Receiver:
        return r.Receiver;
    case SetupField::Bandwidth:
        return r.Bandwidth;
    case SetupField::RxNF:
        return r.RxNF;
    case SetupField::Antenna:
        return r.Antenna;
    case SetupField::AntGain:
        return r.AntGain;
    case SetupField::Feedline:
        return r.Feedline;
    case SetupField::Loss:
        return r.Loss;
    case SetupField::Attenuator:
        return r.Attenuator;
    case SetupField::AGC:
        return r.AGC;
    case SetupField::Interval:
        return r.Interval;
    case SetupField::Notes:
        break;
    }
    return r.Notes;
}

bool IsNumericField(SetupField field) {
    switch (field) {
    case SetupField::lat:
    case SetupField::lon:
    case SetupField::Frequency:
    case SetupField::Bandwidth:
    case SetupField::RxNF:
    case SetupField::AntGain:
    case SetupField::Loss:
    case SetupField::Attenuator:
    case SetupField::AGC:
    case SetupField::Interval:
        return true;
    default:
        return false;
    }
}

const std::string& FieldText(const SetupRecord& record, SetupField field) {
    return FieldText(const_cast<SetupRecord&>(record), field);
}

} // namespace zav
