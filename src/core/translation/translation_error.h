#pragma once

#include <string>
#include <utility>
#include <variant>

namespace orvantis {

/// Why a translation came back without text. The first four kinds are the service's own; the
/// fifth carries any other transfer failure as the network layer described it. No kind holds
/// the text that was to be translated.
class TranslationError {
public:
    enum class Kind {
        httpError,     ///< an HTTP reply whose status is not 200
        timeout,       ///< the five-second time-out ran out
        parseFailure,  ///< the URL could not be built, the reply is not HTTP or not the expected JSON
        emptyResult,   ///< the reply was well formed but held no text
        network,       ///< any other transfer failure: no connection, a reset, a TLS failure...
    };

    static TranslationError httpError(int status) { return TranslationError(Kind::httpError, status, {}); }
    static TranslationError timeout() { return TranslationError(Kind::timeout, 0, {}); }
    static TranslationError parseFailure() { return TranslationError(Kind::parseFailure, 0, {}); }
    static TranslationError emptyResult() { return TranslationError(Kind::emptyResult, 0, {}); }
    static TranslationError network(std::string description) {
        return TranslationError(Kind::network, 0, std::move(description));
    }

    Kind kind() const { return kind_; }
    /// The status of an httpError; 0 for the other kinds.
    int status() const { return status_; }
    /// The network layer's sentence for a network error; empty for the other kinds.
    const std::string& description() const { return description_; }
    /// A short English phrase for a person reading a terminal or a log: "HTTP 429",
    /// "timeout after 5s", "network error — Connection refused".
    std::string message() const;

    bool operator==(const TranslationError&) const = default;

private:
    TranslationError(Kind kind, int status, std::string description)
        : kind_(kind), status_(status), description_(std::move(description)) {}

    Kind kind_;
    int status_;
    std::string description_;
};

/// The outcome of a translation: a value or a TranslationError.
template <typename T>
class TranslationResult {
public:
    TranslationResult(T value) : outcome_(std::move(value)) {}                       // NOLINT: implicit by design
    TranslationResult(TranslationError error) : outcome_(std::move(error)) {}        // NOLINT: implicit by design

    bool ok() const { return std::holds_alternative<T>(outcome_); }
    explicit operator bool() const { return ok(); }
    /// The value; only when ok().
    const T& value() const { return std::get<T>(outcome_); }
    T& value() { return std::get<T>(outcome_); }
    /// The error; only when !ok().
    const TranslationError& error() const { return std::get<TranslationError>(outcome_); }

private:
    std::variant<T, TranslationError> outcome_;
};

}  // namespace orvantis
