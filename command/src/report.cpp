#include <lapwing/kit/report.h>

#include "commands.h"
#include "places.h"

namespace command {
namespace {

std::string listOf(const Places& places) {
    std::string list;
    for (const std::string& place : places) {
        list += (list.empty() ? "" : ", ") + nameOf(place);
    }
    return list;
}

std::string pageOf(const ReportOptions& options) {
    const std::vector<lapwing::Recording> recordings = load(options.places);
    const std::string places = listOf(options.places);
    return options.before.empty()
               ? lapwing::recordingsPage(recordings, places)
               : lapwing::comparisonPage(load(options.before), recordings,
                                         nameOf(options.before) + " against " + places);
}

}  // namespace

int report(const ReportOptions& options) {
    save(options.output, pageOf(options));
    return 0;
}

}  // namespace command
