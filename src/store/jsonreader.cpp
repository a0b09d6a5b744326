#include "store/jsonreader.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <cctype>
#include <cstring>

QString withPairedSurrogates(QString text)
{
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < size; ++i) {
        const QChar c = text.at(i);
        if (!c.isSurrogate())
            continue;
        if (c.isHighSurrogate() && i + 1 < size && text.at(i + 1).isLowSurrogate())
            ++i;
        else
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

std::optional<QJsonObject> parseJsonObject(const QByteArray& bytes, QString& error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        error = QStringLiteral("The data is not valid JSON: %1 at offset %2")
                    .arg(parseError.errorString())
                    .arg(parseError.offset);
        return std::nullopt;
    }
    if (!document.isObject()) {
        error = QStringLiteral("The data is not a JSON object.");
        return std::nullopt;
    }
    return document.object();
}

std::optional<qint64> exactInteger(const QJsonValue& value)
{
    if (!value.isDouble())
        return std::nullopt;
    // toInteger() falls back to its argument when the number is not a whole
    // qint64; asking with two different fallbacks tells the cases apart.
    const qint64 a = value.toInteger(0);
    const qint64 b = value.toInteger(1);
    if (a != b)
        return std::nullopt;
    return a;
}

std::optional<QUuid> uuidFromText(const QString& text)
{
    if (text.size() != 36)
        return std::nullopt;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? c != QLatin1Char('-') : !std::isxdigit(static_cast<unsigned char>(c.toLatin1())) || c.unicode() > 0x7f)
            return std::nullopt;
    }
    return QUuid::fromString(text);
}

QString uuidText(const QUuid& id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

JsonObjectReader::JsonObjectReader(const QJsonObject& object, QString where)
    : m_object(object)
    , m_where(std::move(where))
{
}

void JsonObjectReader::fail(const QString& key, const char* expected)
{
    if (!ok())
        return;
    const QString place = m_where.isEmpty() ? QString() : QStringLiteral(" in %1").arg(m_where);
    if (!m_object.contains(key))
        m_error = QStringLiteral("The data is missing the key \"%1\"%2.").arg(key, place);
    else
        m_error = QStringLiteral("The key \"%1\"%2 is not %3.").arg(key, place, QLatin1String(expected));
}

std::optional<QJsonValue> JsonObjectReader::take(const QString& key)
{
    if (!ok())
        return std::nullopt;
    const auto it = m_object.constFind(key);
    if (it == m_object.constEnd()) {
        fail(key, "present");
        return std::nullopt;
    }
    return it.value();
}

QString JsonObjectReader::string(const QString& key)
{
    const auto value = take(key);
    if (value && value->isString())
        return withPairedSurrogates(value->toString());
    if (value)
        fail(key, "a string");
    return {};
}

bool JsonObjectReader::boolean(const QString& key)
{
    const auto value = take(key);
    if (value && value->isBool())
        return value->toBool();
    if (value)
        fail(key, "a boolean");
    return false;
}

double JsonObjectReader::number(const QString& key)
{
    const auto value = take(key);
    if (value && value->isDouble())
        return value->toDouble();
    if (value)
        fail(key, "a number");
    return 0;
}

qint64 JsonObjectReader::integer(const QString& key, qint64 min, qint64 max)
{
    const auto value = take(key);
    if (!value)
        return 0;
    if (const auto whole = exactInteger(*value); whole && *whole >= min && *whole <= max)
        return *whole;
    fail(key, "an integer");
    return 0;
}

void JsonObjectReader::requireRange(const QString& key, double value, double min, double max)
{
    if (ok() && !(value >= min && value <= max))
        m_error = QStringLiteral("The key \"%1\" is %2, not between %3 and %4.").arg(key).arg(value).arg(min).arg(max);
}

std::optional<qint64> JsonObjectReader::optionalInteger(const QString& key)
{
    if (!ok())
        return std::nullopt;
    const QJsonValue value = m_object.value(key);
    if (value.isUndefined() || value.isNull())
        return std::nullopt;
    if (const auto whole = exactInteger(value))
        return whole;
    fail(key, "an integer");
    return std::nullopt;
}

QJsonArray JsonObjectReader::array(const QString& key)
{
    const auto value = take(key);
    if (value && value->isArray())
        return value->toArray();
    if (value)
        fail(key, "an array");
    return {};
}

QUuid JsonObjectReader::uuid(const QString& key)
{
    const auto value = take(key);
    if (!value)
        return {};
    if (value->isString()) {
        if (const auto id = uuidFromText(value->toString()))
            return *id;
    }
    fail(key, "a UUID");
    return {};
}

QStringList JsonObjectReader::strings(const QString& key)
{
    const QJsonArray list = array(key);
    QStringList result;
    result.reserve(list.size());
    for (const QJsonValue& item : list) {
        if (!item.isString()) {
            fail(key, "an array of strings");
            return {};
        }
        result.append(withPairedSurrogates(item.toString()));
    }
    return result;
}

std::optional<QJsonObject> JsonObjectReader::objectAt(const QJsonArray& array, qsizetype index, const QString& key)
{
    if (!ok())
        return std::nullopt;
    const QJsonValue item = array.at(index);
    if (item.isObject())
        return item.toObject();
    m_error = QStringLiteral("Item %1 of \"%2\" is not an object.").arg(index).arg(key);
    return std::nullopt;
}

namespace {

// Walks JSON text value by value; every step fails on text it cannot walk.
struct JsonWalker {
    QByteArrayView text;
    qsizetype at = 0;

    bool atEnd() const { return at >= text.size(); }
    char next()
    {
        while (!atEnd() && (text[at] == ' ' || text[at] == '\n' || text[at] == '\r' || text[at] == '\t'))
            ++at;
        return atEnd() ? '\0' : text[at];
    }
    bool take(char c)
    {
        if (next() != c)
            return false;
        ++at;
        return true;
    }
    bool string(QByteArrayView* content = nullptr)
    {
        if (!take('"'))
            return false;
        const qsizetype start = at;
        for (; !atEnd(); ++at) {
            if (text[at] == '\\') {
                ++at;
            } else if (text[at] == '"') {
                if (content)
                    *content = text.sliced(start, at - start);
                ++at;
                return true;
            }
        }
        return false;
    }
    bool value()
    {
        const char first = next();
        if (first == '"')
            return string();
        if (first != '{' && first != '[') {
            const qsizetype start = at;
            while (!atEnd() && !QByteArrayView(",:]} \n\r\t").contains(text[at]))
                ++at;
            return at > start;
        }
        int depth = 0;
        while (!atEnd()) {
            const char c = text[at];
            if (c == '"') {
                if (!string())
                    return false;
                continue;
            }
            ++at;
            if (c == '{' || c == '[')
                ++depth;
            else if ((c == '}' || c == ']') && --depth == 0)
                return true;
        }
        return false;
    }
};

} // namespace

JsonElement jsonArrayElement(QByteArrayView json, QLatin1StringView key, qsizetype index)
{
    JsonWalker walk{json};
    if (json.startsWith("\xEF\xBB\xBF"))
        walk.at = 3;
    if (!walk.take('{'))
        return {};
    // A key written with escapes, or the key again later, is another reading
    // than the whole decoding's: the caller then decodes it all.
    const QByteArray quotedKey = '"' + QByteArray(key.data(), key.size()) + '"';
    const auto alone = [&](JsonElement element) {
        // Searched with the C library's vector code: this runs over the rest
        // of a file of megabytes at every start.
        const QByteArrayView rest = json.sliced(walk.at);
        if (memmem(rest.data(), size_t(rest.size()), quotedKey.data(), size_t(quotedKey.size())))
            return JsonElement{};
        const char* const end = rest.data() + rest.size();
        for (const char* at = rest.data(); (at = static_cast<const char*>(memchr(at, '\\', size_t(end - at))));) {
            if (end - at < 2 || at[1] == 'u')
                return JsonElement{};
            at += 2; // past the escaped character, which may be another backslash
        }
        return element;
    };
    while (walk.next() == '"') {
        QByteArrayView name;
        if (!walk.string(&name) || !walk.take(':') || name.contains('\\'))
            return {};
        if (name != key) {
            if (!walk.value() || (!walk.take(',') && walk.next() != '}'))
                return {};
            continue;
        }
        if (!walk.take('['))
            return {};
        for (qsizetype i = 0;; ++i) {
            if (walk.next() == ']')
                return alone({JsonElement::Outcome::pastTheEnd, {}});
            const qsizetype start = walk.at;
            if (!walk.value())
                return {};
            if (i == index)
                return alone({JsonElement::Outcome::found, json.sliced(start, walk.at - start)});
            if (!walk.take(',') && walk.next() != ']')
                return {};
        }
    }
    return {};
}
