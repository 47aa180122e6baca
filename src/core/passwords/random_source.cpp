#include "core/passwords/random_source.h"

#include <cerrno>

#include <sys/random.h>

namespace orvantis {

bool KernelRandomSource::fill(std::span<std::uint8_t> out) {
    std::size_t done = 0;
    while (done < out.size()) {
        const ssize_t got = ::getrandom(out.data() + done, out.size() - done, 0);
        if (got < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        done += static_cast<std::size_t>(got);
    }
    return true;
}

}  // namespace orvantis
