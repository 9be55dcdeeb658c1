#pragma once

#include "cli/CliIo.h"
#include "platform/HttpClient.h"
#include "platform/XmlLookup.h"

#include <string>

namespace zav {

class MainModel;

// What the transfer showed in the end: the dialog's Message text (empty when there were no
// results to transfer) and kExitOk when the observation went through.
struct PostOutcome {
    int status;
    std::string Message;
};

// zavcli measure --post: the transfer dialog opened on the measured observation and its OK
// pressed, with the profile's "transfer" account. kExitFailed when there were no results,
// no address, or the server refused or failed; the reasons that the dialog would not show
// go to standard error.
PostOutcome PostObservation(MainModel& model, CliIo& io);

// The same over the given adapters.
PostOutcome PostObservation(MainModel& model, CliIo& io, HttpClient& http, XmlLookup& xml);

} // namespace zav
