// orvantis_text_target: a window with one Qt line edit, for the tests that drive a real Qt text
// field through the accessibility bus and the keyboard.
//
//   orvantis_text_target [--out FILE] [--password] [--title TITLE] [--text TEXT]
//                        [--copy-secret TEXT --marker concealed|hint]
//
// --out FILE receives the field's whole text (UTF-8, no newline) at start and after every
// change, replaced atomically, so a test can read it back at any time. --password makes the
// field a password field. The field has the focus when the window shows. Qt exposes it on the
// accessibility bus only with QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 (or a screen reader running).
// --copy-secret TEXT puts TEXT on the clipboard at start, marked secret the way a password
// manager does: with the concealed type ("concealed") or with x-kde-passwordManagerHint
// "secret" ("hint"); the program stays the clipboard's owner while it runs.

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QCommandLineParser>
#include <QFile>
#include <QLineEdit>
#include <QSaveFile>
#include <QVBoxLayout>
#include <QWidget>

namespace {

void writeText(const QString& path, const QString& text) {
    if (path.isEmpty()) return;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return;
    file.write(text.toUtf8());
    file.commit();
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("orvantis_text_target"));

    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption out(QStringLiteral("out"), QStringLiteral("File that receives the text."),
                                 QStringLiteral("FILE"));
    const QCommandLineOption password(QStringLiteral("password"), QStringLiteral("A password field."));
    const QCommandLineOption title(QStringLiteral("title"), QStringLiteral("Window title."), QStringLiteral("TITLE"),
                                   QStringLiteral("Orvantis text target"));
    const QCommandLineOption text(QStringLiteral("text"), QStringLiteral("Initial text."), QStringLiteral("TEXT"));
    const QCommandLineOption copySecret(QStringLiteral("copy-secret"), QStringLiteral("Text to copy as a secret."),
                                        QStringLiteral("TEXT"));
    const QCommandLineOption marker(QStringLiteral("marker"), QStringLiteral("concealed or hint."),
                                    QStringLiteral("MARKER"), QStringLiteral("concealed"));
    parser.addOptions({out, password, title, text, copySecret, marker});
    parser.process(application);

    QWidget window;
    window.setWindowTitle(parser.value(title));
    auto* layout = new QVBoxLayout(&window);
    auto* field = new QLineEdit(&window);
    field->setAccessibleName(QStringLiteral("field"));
    if (parser.isSet(password)) field->setEchoMode(QLineEdit::Password);
    field->setText(parser.value(text));
    layout->addWidget(field);

    const QString outPath = parser.value(out);
    QObject::connect(field, &QLineEdit::textChanged, field,
                     [outPath](const QString& current) { writeText(outPath, current); });
    writeText(outPath, field->text());

    if (parser.isSet(copySecret)) {
        auto* mime = new QMimeData;
        mime->setText(parser.value(copySecret));
        if (parser.value(marker) == QLatin1String("hint"))
            mime->setData(QStringLiteral("x-kde-passwordManagerHint"), QByteArrayLiteral("secret"));
        else
            mime->setData(QStringLiteral("org.nspasteboard.ConcealedType"), QByteArrayLiteral("\x01"));
        QGuiApplication::clipboard()->setMimeData(mime, QClipboard::Clipboard);
    }

    window.resize(400, 80);
    window.move(40, 60);
    window.show();
    field->setFocus();
    window.activateWindow();
    return QApplication::exec();
}
