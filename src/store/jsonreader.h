#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QUuid>

#include <limits>
#include <optional>

// Parses bytes that must hold one JSON object. On failure returns nothing and
// sets error to the parser's message.
std::optional<QJsonObject> parseJsonObject(const QByteArray& bytes, QString& error);

// Reads required members of a JSON object strictly: the first missing or
// mistyped key is remembered as the error (naming the key), and every later
// read is a no-op. Unknown keys are ignored.
class JsonObjectReader
{
public:
    JsonObjectReader(const QJsonObject& object, QString where);

    QString string(const QString& key);
    bool boolean(const QString& key);
    double number(const QString& key);
    qint64 integer(const QString& key, qint64 min = std::numeric_limits<qint64>::min(),
                   qint64 max = std::numeric_limits<qint64>::max());
    std::optional<qint64> optionalInteger(const QString& key); // absent or null: none
    QJsonArray array(const QString& key);
    QUuid uuid(const QString& key);
    QStringList strings(const QString& key);

    // Fails on value, read from key, when it lies outside min … max.
    void requireRange(const QString& key, double value, double min, double max);

    // For elements of arrays (objects nested in lists).
    std::optional<QJsonObject> objectAt(const QJsonArray& array, qsizetype index, const QString& key);

    bool ok() const { return m_error.isEmpty(); }
    const QString& error() const { return m_error; }

private:
    std::optional<QJsonValue> take(const QString& key);
    void fail(const QString& key, const char* expected);

    const QJsonObject& m_object;
    QString m_where;
    QString m_error;
};

// The integer a JSON number stands for exactly, if it stands for one.
std::optional<qint64> exactInteger(const QJsonValue& value);

// Accepts the 36-character canonical text in either case; nothing else.
std::optional<QUuid> uuidFromText(const QString& text);

// Canonical upper-case text of an id.
QString uuidText(const QUuid& id);

// Text that a UTF-8 file can hold. JSON escapes ("\ud800") and broken UTF-16
// tags can give half of a surrogate pair, which the writer would turn into
// '?'; each such half becomes U+FFFD instead, where the text comes in, so that
// what we hold is what we write.
QString withPairedSurrogates(QString text);

// Finds element index of the array under key in the JSON object in json
// without decoding the rest: the start-up shows one track of a playlist that
// may hold thousands. The text is only located, not checked: decode it.
struct JsonElement {
    enum class Outcome { found, pastTheEnd, notFound } outcome = Outcome::notFound;
    QByteArrayView text; // when found
};
JsonElement jsonArrayElement(QByteArrayView json, QLatin1StringView key, qsizetype index);
