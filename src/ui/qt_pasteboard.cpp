#include "ui/qt_pasteboard.h"

#include <algorithm>
#include <utility>

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QObject>

#include "platform/pasteboard_types.h"

namespace orvantis::ui {
namespace {

namespace type = platform::pasteboard_type;

const QMimeData* currentData() {
    const QClipboard* clipboard = QGuiApplication::clipboard();
    return clipboard != nullptr ? clipboard->mimeData(QClipboard::Clipboard) : nullptr;
}

std::string toStd(const QByteArray& bytes) { return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size())); }

}  // namespace

std::string QtPasteboard::typeForMime(std::string_view mime) { return platform::typeForMime(mime); }

std::vector<std::string> QtPasteboard::mimesForType(std::string_view typeName) {
    return platform::mimesForType(typeName);
}

QtPasteboard::QtPasteboard() : context_(std::make_unique<QObject>()) {
    if (QClipboard* clipboard = QGuiApplication::clipboard()) {
        QObject::connect(clipboard, &QClipboard::changed, context_.get(), [this](QClipboard::Mode mode) {
            if (mode == QClipboard::Clipboard) ++changeCount_;
        });
    }
}

QtPasteboard::~QtPasteboard() = default;

std::vector<std::string> QtPasteboard::types() const {
    std::vector<std::string> result;
    const QMimeData* mime = currentData();
    if (mime == nullptr) return result;
    for (const QString& format : mime->formats()) {
        // X11 targets that are no content ("TARGETS", "TIMESTAMP", "MULTIPLE") are not types.
        if (!format.contains(QLatin1Char('/')) && format != QLatin1String("UTF8_STRING") &&
            !format.startsWith(QLatin1String("org.")) && !format.startsWith(QLatin1String("x-"))) {
            continue;
        }
        std::string name = typeForMime(format.toStdString());
        if (std::find(result.begin(), result.end(), name) == result.end()) result.push_back(std::move(name));
    }
    return result;
}

std::optional<std::string> QtPasteboard::data(std::string_view typeName) const {
    const QMimeData* mime = currentData();
    if (mime == nullptr) return std::nullopt;
    if (typeName == type::kText) {
        // Only a text target counts: Qt would also offer a URL list as text. Qt converts
        // whichever text target the owner offers to UTF-8.
        const QStringList formats = mime->formats();
        const bool hasTextTarget = std::any_of(formats.begin(), formats.end(), [](const QString& format) {
            return typeForMime(format.toStdString()) == type::kText;
        });
        if (!hasTextTarget) return std::nullopt;
        const QByteArray utf8 = mime->text().toUtf8();
        return toStd(utf8);
    }
    const QStringList formats = mime->formats();
    for (const std::string& candidate : mimesForType(typeName)) {
        const QString format = QString::fromStdString(candidate);
        if (formats.contains(format)) return toStd(mime->data(format));
    }
    return std::nullopt;
}

std::optional<std::string> QtPasteboard::selectionText() const {
    const QClipboard* clipboard = QGuiApplication::clipboard();
    if (clipboard == nullptr || !clipboard->supportsSelection()) return std::nullopt;
    const QMimeData* mime = clipboard->mimeData(QClipboard::Selection);
    if (mime == nullptr || !mime->hasText()) return std::nullopt;
    return mime->text().toStdString();
}

void QtPasteboard::setSelectionText(std::string_view utf8) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (clipboard == nullptr || !clipboard->supportsSelection()) return;
    clipboard->setText(QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())), QClipboard::Selection);
}

void QtPasteboard::write(const platform::PasteboardItem& item) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (clipboard == nullptr) return;
    auto mime = std::make_unique<QMimeData>();
    bool secret = false;
    for (const auto& [typeName, bytes] : item.representations) {
        if (typeName == type::kText) {
            mime->setText(QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size())));
            continue;
        }
        if (typeName == type::kConcealed) secret = true;
        const QByteArray data(bytes.data(), static_cast<qsizetype>(bytes.size()));
        for (const std::string& format : mimesForType(typeName)) mime->setData(QString::fromStdString(format), data);
    }
    if (secret) {
        // Both conventions, so that every clipboard history on the desktop skips it.
        mime->setData(QString::fromUtf8(type::kPasswordManagerHint.data(), type::kPasswordManagerHint.size()),
                      QByteArray(type::kPasswordManagerHintSecret.data(),
                                 static_cast<qsizetype>(type::kPasswordManagerHintSecret.size())));
    }
    clipboard->setMimeData(mime.release(), QClipboard::Clipboard);
    // Counted here as well: the signal of our own write may come later or not at all.
    ++changeCount_;
}

}  // namespace orvantis::ui
