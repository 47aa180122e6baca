#include "core/translation/translation_service.h"

#include <variant>

#include "core/text/graphemes.h"
#include "core/translation/translation_response.h"

namespace orvantis {

struct TranslationService::Context {
    platform::MainLoop& loop;
    const LogCategory& log;
    /// Reads the replies, one at a time, off the main thread.
    std::unique_ptr<platform::SerialQueue> parser;
};

template <typename T>
struct TranslationService::Flight {
    std::function<void(TranslationResult<T>)> callback;
    platform::HttpRequest transfer;
};

namespace {

/// Hands `result` to the callback of the translation, if it is still wanted. Main thread.
template <typename Flight, typename Result>
void finish(const std::weak_ptr<Flight>& weak, Result result) {
    auto flight = weak.lock();
    if (!flight || !flight->callback) return;
    // The callback may drop the handle, and with it the flight: it runs from a local copy.
    auto callback = std::exchange(flight->callback, nullptr);
    flight.reset();
    callback(std::move(result));
}

/// A transfer error's words as they may go to the log and to the caller: a description that
/// quotes the request's URL, and so the text, is replaced whole.
std::string safeDescription(const std::string& description) {
    if (description.find("/translate_a/") != std::string::npos) return "the transfer failed";
    return description;
}

}  // namespace

TranslationService::TranslationService(platform::HttpClient& http, platform::MainLoop& loop, const LogCategory& log,
                                       std::function<std::string()> endpoint)
    : http_(http), endpoint_(std::move(endpoint)),
      context_(std::make_shared<Context>(Context{loop, log, loop.makeSerialQueue("MOLVEX.Orvantis.TranslationService")})) {}

TranslationService::~TranslationService() = default;

TranslationRequest TranslationService::translate(std::string_view text, std::string_view from, std::string_view to,
                                                 TranslationCallback callback) {
    return start<std::string>(text, from, to, TranslationQuery::translation, /*logged=*/true, std::move(callback),
                              &parseTranslationResponse);
}

TranslationRequest TranslationService::translateWithAlternates(std::string_view text, std::string_view from,
                                                               std::string_view to, AlternatesCallback callback) {
    return start<std::vector<std::string>>(text, from, to, TranslationQuery::alternates, /*logged=*/false,
                                           std::move(callback), &parseAlternatesResponse);
}

template <typename T>
TranslationRequest TranslationService::start(std::string_view text, std::string_view from, std::string_view to,
                                             TranslationQuery query, bool logged,
                                             std::function<void(TranslationResult<T>)> callback,
                                             TranslationResult<T> (*parse)(std::string_view)) {
    auto flight = std::make_shared<Flight<T>>();
    flight->callback = std::move(callback);
    const std::weak_ptr<Flight<T>> weak = flight;
    // The lines carry the two codes, never the text.
    const std::string prefix =
        logged ? "translate(" + std::string(from) + "→" + std::string(to) + "): " : std::string();
    const LogCategory* log = logged ? &context_->log : nullptr;

    auto url = translationUrl(endpoint_ ? endpoint_() : std::string(kDefaultTranslationEndpoint), text, from, to, query);
    if (!url) {
        if (log) log->error(prefix + "URL build failed for input length " + std::to_string(text::graphemeCount(text)));
        context_->loop.post([weak] { finish(weak, TranslationResult<T>(TranslationError::parseFailure())); });
        return TranslationRequest(std::move(flight));
    }

    flight->transfer = http_.get(
        std::move(*url), kTimeout,
        [weak, context = std::weak_ptr<Context>(context_), prefix, log, parse](platform::HttpResult result) {
            auto live = context.lock();
            if (!live) return;
            if (const auto* error = std::get_if<platform::HttpTransferError>(&result)) {
                if (error->kind == platform::HttpTransferError::Kind::timedOut) {
                    if (log) log->error(prefix + "timeout after 5s");
                    finish(weak, TranslationResult<T>(TranslationError::timeout()));
                } else {
                    const std::string description = safeDescription(error->description);
                    if (log) log->error(prefix + "network error — " + description);
                    finish(weak, TranslationResult<T>(TranslationError::network(description)));
                }
                return;
            }
            auto& response = std::get<platform::HttpResponse>(result);
            if (!response.isHttp) {
                if (log) log->error(prefix + "non-HTTP response");
                finish(weak, TranslationResult<T>(TranslationError::parseFailure()));
                return;
            }
            if (response.status != 200) {
                if (log) log->error(prefix + "HTTP " + std::to_string(response.status));
                finish(weak, TranslationResult<T>(TranslationError::httpError(response.status)));
                return;
            }
            // A large reply takes a while to read: off the main thread, then back.
            live->parser->async([weak, body = std::move(response.body), parse, &loop = live->loop]() mutable {
                auto parsed = parse(body);
                body.clear();
                loop.post([weak, parsed = std::move(parsed)]() mutable { finish(weak, std::move(parsed)); });
            });
        });
    return TranslationRequest(std::move(flight));
}

}  // namespace orvantis
