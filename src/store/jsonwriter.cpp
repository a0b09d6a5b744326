#include "store/jsonwriter.h"

#include "store/console.h"

#include <charconv>
#include <cmath>

QByteArray jsonNumber(double number)
{
    // JSON has no NaN or infinity; nothing of ours should produce them.
    PLINK_CHECK(std::isfinite(number), "a JSON number must be finite");
    if (number == 0)
        return QByteArrayLiteral("0");
    // The fewest digits that read back exactly; plain decimals for everyday
    // magnitudes (100000, not 1e+05), an exponent only for the extremes.
    const double magnitude = std::abs(number);
    const auto format = magnitude >= 1e-7 && magnitude < 1e21 ? std::chars_format::fixed : std::chars_format::scientific;
    char text[64]; // at most 17 significant digits, 21 places before the point or 7 zeros after it
    const auto written = std::to_chars(text, text + sizeof text, number, format);
    PLINK_CHECK(written.ec == std::errc(), "a JSON number fits its buffer");
    return QByteArray(text, written.ptr - text);
}

void JsonWriter::newline(qsizetype depth)
{
    m_out += '\n';
    m_out += QByteArray(depth * 2, ' ');
}

void JsonWriter::beforeValue()
{
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (m_levels.isEmpty())
        return;
    Level& level = m_levels.last();
    if (level.members++ > 0)
        m_out += ',';
    newline(m_levels.size());
}

void JsonWriter::beginObject()
{
    beforeValue();
    m_out += '{';
    m_levels.append(Level{});
}

void JsonWriter::beginArray()
{
    beforeValue();
    m_out += '[';
    m_levels.append(Level{});
}

void JsonWriter::close(char bracket)
{
    PLINK_CHECK(!m_levels.isEmpty() && !m_afterKey, "unbalanced JSON writer");
    const Level level = m_levels.takeLast();
    if (level.members > 0)
        newline(m_levels.size());
    m_out += bracket;
}

void JsonWriter::endObject()
{
    close('}');
}

void JsonWriter::endArray()
{
    close(']');
}

void JsonWriter::key(QStringView name)
{
    beforeValue();
    writeString(name);
    m_out += " : ";
    m_afterKey = true;
}

void JsonWriter::value(QStringView text)
{
    beforeValue();
    writeString(text);
}

void JsonWriter::writeString(QStringView text)
{
    static const char hex[] = "0123456789abcdef";
    const QByteArray utf8 = text.toUtf8();
    m_out += '"';
    // Copy runs of plain bytes at once; only quotes, backslashes, slashes and
    // control characters need an escape.
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(utf8[i]);
        if (c >= 0x20 && c != '"' && c != '\\' && c != '/')
            continue;
        m_out.append(utf8.constData() + runStart, i - runStart);
        runStart = i + 1;
        switch (c) {
        case '"': m_out += "\\\""; break;
        case '\\': m_out += "\\\\"; break;
        case '/': m_out += "\\/"; break;
        case '\b': m_out += "\\b"; break;
        case '\f': m_out += "\\f"; break;
        case '\n': m_out += "\\n"; break;
        case '\r': m_out += "\\r"; break;
        case '\t': m_out += "\\t"; break;
        default:
            m_out += "\\u00";
            m_out += hex[c >> 4];
            m_out += hex[c & 0xf];
        }
    }
    m_out.append(utf8.constData() + runStart, utf8.size() - runStart);
    m_out += '"';
}

void JsonWriter::value(bool flag)
{
    beforeValue();
    m_out += flag ? "true" : "false";
}

void JsonWriter::value(qint64 number)
{
    beforeValue();
    m_out += QByteArray::number(number);
}

void JsonWriter::value(double number)
{
    beforeValue();
    m_out += jsonNumber(number);
}

QByteArray JsonWriter::take()
{
    PLINK_CHECK(m_levels.isEmpty(), "JSON writer taken before it was closed");
    return std::exchange(m_out, {});
}
