// SPDX-License-Identifier: Apache-2.0
// The fields of a blockette as data: what stands in it, under which name, and where.
//
// Every control blockette (005 to 074) and every data blockette (100 to 2000) is a table of its fields in
// wire order. decode_blockette reads any of them by its table into a flat list:
//
//     const quarry::Fields b058 = quarry::decode_blockette(58, "0580035 2 4.00000E+05 1.00000E+00 0");
//     const std::optional<std::int64_t> stage = quarry::integer_field(b058.fields, "stage_sequence_number");
//     const std::optional<double> gain = quarry::real_field(b058.fields, "sensitivity_gain");
//     for (const auto row : quarry::rows_of(b058.fields, "number_of_history_values"))
//         std::cout << quarry::text_field(row, "time_of_above_calibration").value_or("") << '\n';
//     for (const quarry::FieldProblem& problem : b058.problems)
//         std::cerr << problem.field.spec->name << ' ' << quarry::describe(problem.fault) << '\n';
//
// Reading is forgiving and never fails: a field that does not convert keeps its text and adds a problem, what
// the text lacks is absent. Its cost is bounded by the text's length, whatever the counts in it say. There is
// no state: any number of threads may decode at once.
//
// Nothing is copied: values and raw texts are views of the text that was decoded, which must outlive them.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

#pragma GCC visibility push(default)
namespace quarry {

// How a value stands in a blockette. The first five are characters, as in all control blockettes; the rest is
// binary, in the byte order of the data record.
enum class FieldKind : std::uint8_t {
    integer,
    real,
    text,          // of fixed width
    variable_text, // closed by "~"
    time,          // YYYY,DDD,HH:MM:SS.FFFF or a shortened form of it, closed by "~"
    u8,
    i8,
    u16,
    u32,
    f32,
    bytes, // opaque, up to the end of the blockette
};

constexpr bool is_binary_number(FieldKind kind) {
    return kind >= FieldKind::u8 && kind <= FieldKind::f32;
}

// A field of a table.
struct FieldSpec {
    std::string_view name;
    FieldKind kind;
    std::uint8_t number; // in the SEED manual: 1 is the type, 2 the length or the next blockette's offset
    std::uint8_t
        repeats; // that many fields after this count repeat as often as it says; 0 if it is not a count
    std::uint16_t width; // bytes of a value; the longest legal variable text without its "~", 0 for any
    std::uint16_t times; // values in a row; 0: up to the end of the blockette
};

// A type of blockette. Field numbers ascend; the parts of a binary time share one.
struct BlocketteSpec {
    int type;
    int smallest;           // length in bytes
    std::string_view name;  // such as "response_poles_and_zeros"
    std::string_view title; // such as "Response (Poles and Zeros)"
    std::span<const FieldSpec> fields;
};

// All types in ascending order, and the one of a type number, null if it is unknown.
std::span<const BlocketteSpec> blockette_specs();
const BlocketteSpec* blockette_spec(int type);

// Absent (a numeric field that is blank), a number, or text. Texts are trimmed of white space and NULs on
// both sides. A numeric field that does not convert holds its text; numbers are always finite.
using FieldValue = std::variant<std::monostate, std::int64_t, double, std::string_view>;

struct Field {
    const FieldSpec* spec;
    FieldValue value;
    std::string_view raw; // as it stands, without the "~" that closes it
    std::size_t offset;   // of the raw text in the blockette
};

enum class FieldFault : std::uint8_t {
    not_a_number, // the value is its text, or absent for a binary number that is not finite
    not_a_time,   // nor blank; the value is its text
    cut_short,    // the blockette ends within the field; a number cut short is treated as not a number
    not_closed,   // a variable text that the blockette's end closes
    too_long,     // a variable text beyond its limit, kept whole
    bad_count,    // a negative count: its group has no rows
    missing_rows, // a count of more than the blockette holds: the group ends with the text
    bad_offset,   // opaque bytes that would begin outside the blockette or within its fields
};

// The fault in words that follow the field's name, such as "is not a number".
std::string_view describe(FieldFault fault);

struct FieldProblem {
    FieldFault fault;
    Field field; // where it is; a count for a fault of its group
};

// A decoded blockette. Its fields stand in wire order, groups unrolled: the rows of a group follow its count,
// the values of an array follow each other. Fields that the text lacks are not in the list.
struct Fields {
    int type = 0;
    const BlocketteSpec* spec = nullptr; // null for an unknown type, which has no fields
    std::string_view text;               // the whole blockette
    std::string_view surplus;            // what follows the last field
    std::vector<Field> fields;
    std::vector<FieldProblem> problems;
};

// Decodes a blockette from its first byte, its type, on. A control blockette's text is what its length says,
// joined over logical records. A data blockette's bytes are in the given order and may go on beyond its end,
// which is then its surplus, except for 405 and 2000, which go on to the end of the bytes (2000 at most as
// far as its length says). The second form reuses the memory of a former result.
Fields decode_blockette(int type, std::string_view text, std::endian order = std::endian::big);
void decode_blockette(int type, std::string_view text, std::endian order, Fields* fields);

// True if decode_blockette reports no problem for any data blockette of this type and size: all fields of
// the type are integers, and the size has room for all of them.
bool is_sound_by_size(int type, std::size_t size);

// Access by name within the fields of a blockette or a row: the first field of the name, or null; its value
// if it has one of that kind (an integer is a real too).
const Field* find_field(std::span<const Field> fields, std::string_view name);
std::optional<std::int64_t> integer_field(std::span<const Field> fields, std::string_view name);
std::optional<double> real_field(std::span<const Field> fields, std::string_view name);
std::optional<std::string_view> text_field(std::span<const Field> fields, std::string_view name);

// Microseconds since 1970 of the binary time of a data blockette, its fields `year` to `fract` and, if it has
// one, `microsecond`; none without such fields and if they are not a time.
std::optional<std::int64_t> binary_time_field(std::span<const Field> fields);

// The rows of a group, each the run of its fields; the last is incomplete where the text ended within it. A
// row that has a group of its own holds that group's rows too.
class GroupRows {
public:
    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using difference_type = std::ptrdiff_t;
        using value_type = std::span<const Field>;
        using reference = value_type;
        using pointer = void;

        Iterator() = default;
        explicit Iterator(std::span<const Field> rest) : rest_(rest), size_(row_size(rest)) {}
        value_type operator*() const { return rest_.first(size_); }
        Iterator& operator++() { return *this = Iterator(rest_.subspan(size_)); }
        Iterator operator++(int) {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator& other) const { return rest_.size() == other.rest_.size(); }

    private:
        // A row begins with each occurrence of the group's first field.
        static std::size_t row_size(std::span<const Field> rest) {
            std::size_t size = rest.empty() ? 0 : 1;
            while (size < rest.size() && rest[size].spec != rest[0].spec)
                ++size;
            return size;
        }

        std::span<const Field> rest_;
        std::size_t size_ = 0;
    };

    explicit GroupRows(std::span<const Field> fields) : fields_(fields) {}
    Iterator begin() const { return Iterator(fields_); }
    Iterator end() const { return Iterator(fields_.last(0)); }
    bool empty() const { return fields_.empty(); }
    std::span<const Field> fields() const { return fields_; } // of all rows

private:
    std::span<const Field> fields_;
};

// The rows that belong to the count at the front of `fields`, which may go on after them; none if it is
// not a count. By name: those of the first count of that name.
GroupRows rows_at(std::span<const Field> fields);
GroupRows rows_of(std::span<const Field> fields, std::string_view count);

} // namespace quarry
#pragma GCC visibility pop
