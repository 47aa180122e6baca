#include "core/clipboard/reference_date.h"

namespace orvantis {

double secondsSinceReferenceDate(std::chrono::system_clock::time_point time) {
    using namespace std::chrono;
    const auto sinceReference = time.time_since_epoch() - seconds(kReferenceDateUnixSeconds);
    return duration<double>(sinceReference).count();
}

std::chrono::system_clock::time_point timeFromReferenceDate(double seconds) {
    using namespace std::chrono;
    const auto offset = duration_cast<system_clock::duration>(duration<double>(seconds));
    return system_clock::time_point(std::chrono::seconds(kReferenceDateUnixSeconds)) + offset;
}

}  // namespace orvantis
