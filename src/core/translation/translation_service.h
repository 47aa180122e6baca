#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/log/app_logger.h"
#include "core/translation/translation_error.h"
#include "core/translation/translation_url.h"
#include "platform/http_client.h"
#include "platform/main_loop.h"

namespace orvantis {

/// The handle of one translation in flight. Destroying it, or calling cancel(), abandons the
/// translation: its callback never runs afterwards and the transfer stops. Move-only; main
/// thread only.
class TranslationRequest {
public:
    TranslationRequest() = default;
    explicit TranslationRequest(std::shared_ptr<void> flight) : flight_(std::move(flight)) {}
    TranslationRequest(const TranslationRequest&) = delete;
    TranslationRequest& operator=(const TranslationRequest&) = delete;
    TranslationRequest(TranslationRequest&&) noexcept = default;
    TranslationRequest& operator=(TranslationRequest&&) noexcept = default;
    ~TranslationRequest() = default;

    /// Abandons the translation; later calls do nothing.
    void cancel() { flight_.reset(); }

private:
    // The only strong reference to the state of the translation: everything else that waits
    // on it (the transfer's completion, the parse) holds it weakly.
    std::shared_ptr<void> flight_;
};

/// Translates text through the public web endpoint: one HTTP GET a call, the reply read off
/// the main thread, the result given to the callback on the main loop. Several translations may
/// be in flight at once; the service keeps nothing between them and never retries. Failures
/// of translate() are written to the log's Translate category at error level, with the two
/// language codes and never the text; translateWithAlternates() logs nothing.
/// Owned by the composition root; `http`, `loop` and `log` must outlive it. Main thread only.
class TranslationService {
public:
    /// How long one request may take, connecting included.
    static constexpr std::chrono::seconds kTimeout{5};

    using TranslationCallback = std::function<void(TranslationResult<std::string>)>;
    using AlternatesCallback = std::function<void(TranslationResult<std::vector<std::string>>)>;

    /// `endpoint` answers the endpoint preference ("https://host[:port]"), read at each request.
    TranslationService(platform::HttpClient& http, platform::MainLoop& loop, const LogCategory& log,
                       std::function<std::string()> endpoint);
    ~TranslationService();
    TranslationService(const TranslationService&) = delete;
    TranslationService& operator=(const TranslationService&) = delete;

    /// The translation of `text` from `from` ("auto" allowed) to `to`, exactly as the reply's
    /// segments join, untrimmed. The callback runs on the main loop, never from within this call,
    /// with the text or with httpError, timeout, parseFailure (also when no URL can be built),
    /// emptyResult or network.
    [[nodiscard]] TranslationRequest translate(std::string_view text, std::string_view from, std::string_view to,
                                               TranslationCallback callback);

    /// The primary translation followed by the dictionary's terms and the alternative
    /// translations, without repeats; never empty. Errors as translate(), without log lines.
    [[nodiscard]] TranslationRequest translateWithAlternates(std::string_view text, std::string_view from,
                                                             std::string_view to, AlternatesCallback callback);

private:
    struct Context;
    template <typename T>
    struct Flight;

    template <typename T>
    TranslationRequest start(std::string_view text, std::string_view from, std::string_view to,
                             TranslationQuery query, bool logged,
                             std::function<void(TranslationResult<T>)> callback,
                             TranslationResult<T> (*parse)(std::string_view));

    platform::HttpClient& http_;
    std::function<std::string()> endpoint_;
    // What the replies need after the call returned: held weakly by them, so a reply that
    // arrives after the service is gone does nothing.
    std::shared_ptr<Context> context_;
};

}  // namespace orvantis
