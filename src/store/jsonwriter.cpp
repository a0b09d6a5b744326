#include "store/jsonwriter.h"

#include "store/console.h"

#include <QLocale>

#include <cmath>

QByteArray jsonNumber(double number)
{
    // JSON has no NaN or infinity; nothing of ours should produce them.
    PLINK_CHECK(std::isfinite(number), "a JSON number must be finite");
    if (number == 0)
        return QByteArrayLiteral("0");
    return QByteArray::number(number, 'g', QLocale::FloatingPointShortest);
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
    QByteArray& out = m_out;
    out += '"';
    const QByteArray utf8 = text.toUtf8();
    for (const char c : utf8) {
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '/': out += "\\/"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                out += "\\u00";
                out += hex[(c >> 4) & 0xf];
                out += hex[c & 0xf];
            } else {
                out += c;
            }
        }
    }
    out += '"';
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
