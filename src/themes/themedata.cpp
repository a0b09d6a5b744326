#include "themes/themedata.h"

#include "store/jsonreader.h"
#include "store/jsonwriter.h"

namespace {

void write(JsonWriter& json, const char* key, double value)
{
    json.key(QString::fromLatin1(key));
    json.value(value);
}

void write(JsonWriter& json, const char* key, int value)
{
    json.key(QString::fromLatin1(key));
    json.value(value);
}

void write(JsonWriter& json, const char* key, bool value)
{
    json.key(QString::fromLatin1(key));
    json.value(value);
}

// Sizes a screen can show. A window of zero, negative or screen-sized-many
// points, or a control larger than any screen, is a typing slip in a
// hand-edited file, refused like any other unreadable one. Positions are free:
// a control placed off the picture simply is not seen.
constexpr double largestSize = 2000;
constexpr double smallestWindow = 8;
constexpr double largestText = 200;

void read(JsonObjectReader& reader, const char* key, double& value)
{
    const QLatin1String name(key);
    value = reader.number(name);
    if (name.startsWith(QLatin1String("player")))
        reader.requireRange(name, value, smallestWindow, largestSize);
    else if (name.endsWith(QLatin1String("Width")) || name.endsWith(QLatin1String("Height")))
        reader.requireRange(name, value, 0, largestSize);
}

void read(JsonObjectReader& reader, const char* key, int& value)
{
    // Only the two text sizes are integers.
    value = int(reader.integer(QLatin1String(key), std::numeric_limits<int>::min(),
                               std::numeric_limits<int>::max()));
    reader.requireRange(QLatin1String(key), value, 0, largestText);
}

void read(JsonObjectReader& reader, const char* key, bool& value)
{
    value = reader.boolean(QLatin1String(key));
}

} // namespace

QByteArray toJson(const ThemeData& theme)
{
    JsonWriter json;
    json.beginObject();
#define PLINK_WRITE_FIELD(Type, name, Setter, value) write(json, #name, theme.name);
#define PLINK_WRITE_POINT(name, Setter, px, py) \
    write(json, #name "X", theme.name##X);    \
    write(json, #name "Y", theme.name##Y);
    PLINK_GEOMETRY_PROPERTIES(PLINK_WRITE_FIELD, PLINK_WRITE_POINT)
#undef PLINK_WRITE_FIELD
#undef PLINK_WRITE_POINT
    json.endObject();
    return json.take();
}

Decoded<ThemeData> themeDataFromJson(const QByteArray& bytes)
{
    QString error;
    const auto object = parseJsonObject(bytes, error);
    if (!object)
        return {std::nullopt, error};
    JsonObjectReader reader(*object, {});
    ThemeData theme;
#define PLINK_READ_FIELD(Type, name, Setter, value) read(reader, #name, theme.name);
#define PLINK_READ_POINT(name, Setter, px, py) \
    read(reader, #name "X", theme.name##X);  \
    read(reader, #name "Y", theme.name##Y);
    PLINK_GEOMETRY_PROPERTIES(PLINK_READ_FIELD, PLINK_READ_POINT)
#undef PLINK_READ_FIELD
#undef PLINK_READ_POINT
    if (!reader.ok())
        return {std::nullopt, reader.error()};
    return {theme, {}};
}
