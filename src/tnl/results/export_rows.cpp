// Row for row: comma- and tab-separated values, NumPy's array file, rawfile.
#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <set>

#include "tnl/common/exit_status.h"
#include "tnl/results/export.h"

namespace cli {

char* put_number(char* at, double x) {
    if (std::isnan(x)) return std::copy_n("nan", 3, at);  // without a sign
    return std::to_chars(at, at + 32, x).ptr;
}

std::vector<std::string> unique_names(std::vector<std::string> names) {
    std::set<std::string> taken;
    for (std::string& name : names) {
        const std::string base = name;
        for (int k = 2; !taken.insert(name).second; ++k) name = base + "_" + std::to_string(k);
    }
    return names;
}

namespace {

std::vector<std::string> names_of(const export_choice& c) {
    std::vector<std::string> names;
    for (const std::size_t j : c.columns) {
        const record_column& column = c.table.columns[j];
        names.push_back(column.name + (c.with_units && !column.unit.empty() ? " [" + column.unit + "]" : ""));
    }
    return names;
}

bool has_curve_column(const export_choice& c) { return c.end_curve - c.first_curve > 1; }

std::string csv_field(const std::string& name) {
    if (name.find_first_of(",\"\r\n") == std::string::npos) return name;
    std::string field = "\"";
    for (const char ch : name) field += ch == '"' ? std::string("\"\"") : std::string(1, ch);
    return field + "\"";
}

std::string tsv_field(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](char ch) { return ch == '\t' || ch == '\n' || ch == '\r'; }, ' ');
    return name;
}

void write_separated(const export_choice& c, output_file& out, char comma, const char* line_end,
                     std::string (*field)(std::string)) {
    std::string line;
    if (has_curve_column(c)) line = "curve" + std::string(1, comma);
    for (const std::string& name : names_of(c)) line += field(name) + comma;
    line.pop_back();
    out.write(line + line_end);

    line.resize(40 * (c.columns.size() + 1) + 4);
    for (std::size_t k = c.first_curve; k < c.end_curve; ++k)
        for (std::size_t row = c.table.first_row[k]; row < c.table.first_row[k + 1]; ++row) {
            char* at = line.data();
            if (has_curve_column(c)) {
                at = std::to_chars(at, at + 24, k + 1).ptr;
                *at++ = comma;
            }
            for (const std::size_t j : c.columns) {
                at = put_number(at, c.table.at(row, j));
                *at++ = comma;
            }
            --at;
            for (const char* e = line_end; *e != '\0'; ++e) *at++ = *e;
            out.write({line.data(), static_cast<std::size_t>(at - line.data())});
        }
}

}  // namespace

void write_csv(const export_choice& c, output_file& out) {
    write_separated(c, out, ',', "\r\n", [](std::string name) { return csv_field(name); });
}

void write_tsv(const export_choice& c, output_file& out) { write_separated(c, out, '\t', "\n", tsv_field); }

namespace {

// The bytes of numbers, least first.
void append_little_endian(std::string& bytes, double x) {
    std::uint64_t u = std::bit_cast<std::uint64_t>(x);
    char b[8];
    if constexpr (std::endian::native == std::endian::little)
        std::memcpy(b, &u, 8);
    else
        for (char& byte : b) {
            byte = static_cast<char>(u & 0xff);
            u >>= 8;
        }
    bytes.append(b, 8);
}

void append_size(std::string& bytes, std::size_t n, int n_bytes) {
    for (int i = 0; i < n_bytes; ++i) bytes += static_cast<char>(n >> (8 * i) & 0xff);
}

// What stands between the quotes of a Python string, in ASCII. Bytes that are no UTF-8 become U+FFFD.
std::string python_text(const std::string& name) {
    constexpr char hex[] = "0123456789abcdef";
    std::string text;
    const auto escape = [&](char letter, std::uint32_t u, int digits) {
        text += '\\';
        text += letter;
        while (digits-- > 0) text += hex[u >> (4 * digits) & 15];
    };
    for (std::size_t i = 0; i < name.size();) {
        const unsigned lead = static_cast<unsigned char>(name[i]);
        const std::size_t n = lead < 0xc2 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : lead < 0xf5 ? 4 : 1;
        std::uint32_t u = n == 1 ? lead : lead & (0x7fu >> n);
        bool good = lead < 0x80 || n > 1;
        for (std::size_t k = 1; k < n; ++k) {
            const unsigned b = i + k < name.size() ? static_cast<unsigned char>(name[i + k]) : 0;
            good = good && (b & 0xc0u) == 0x80;
            u = u << 6 | (b & 0x3fu);
        }
        if (!good || (u >= 0xd800 && u < 0xe000) || u > 0x10ffff)
            text += "\\ufffd", i += 1;
        else if (i += n; u == '\'' || u == '\\')
            text += '\\', text += static_cast<char>(u);
        else if (u >= 0x20 && u < 0x7f)
            text += static_cast<char>(u);
        else
            u < 0x10000 ? escape('u', u, 4) : escape('U', u, 8);
    }
    return text;
}

}  // namespace

void write_npy(const export_choice& c, output_file& out) {
    std::vector<std::string> names = names_of(c);
    if (has_curve_column(c)) names.insert(names.begin(), "curve");
    for (std::string& name : names) name = name.empty() ? "f" : python_text(name);
    std::string header = "{'descr': [";
    for (const std::string& name : unique_names(names)) header += "('" + name + "', '<f8'), ";
    header.resize(header.size() - 2);
    const std::size_t n_rows = c.table.first_row[c.end_curve] - c.table.first_row[c.first_curve];
    header += "], 'fortran_order': False, 'shape': (" + std::to_string(n_rows) + ",), }";

    const bool is_long = header.size() + 64 > 0xffff;
    const std::size_t n_before = is_long ? 12 : 10;
    header.resize((n_before + header.size() + 1 + 63) / 64 * 64 - n_before - 1, ' ');
    header += '\n';
    std::string bytes = "\x93NUMPY";
    bytes += is_long ? '\x02' : '\x01';
    bytes += '\0';
    append_size(bytes, header.size(), is_long ? 4 : 2);
    out.write(bytes + header);

    for (std::size_t k = c.first_curve; k < c.end_curve; ++k)
        for (std::size_t row = c.table.first_row[k]; row < c.table.first_row[k + 1]; ++row) {
            bytes.clear();
            if (has_curve_column(c)) append_little_endian(bytes, static_cast<double>(k + 1));
            for (const std::size_t j : c.columns) append_little_endian(bytes, c.table.at(row, j));
            out.write(bytes);
        }
}

namespace {

struct word_for {
    std::string_view key, word;
};
constexpr word_for variable_types[] = {{"V", "voltage"}, {"A", "current"}, {"s", "time"}, {"Hz", "frequency"}};
constexpr word_for plot_names[] = {{"trns", "Transient Analysis"}, {"startup", "Operating Point"},
                                   {"ssw", "Transient Analysis"},  {"ac", "AC Analysis"},
                                   {"nyquist", "AC Analysis"},     {"dc", "DC transfer characteristic"},
                                   {"fourier", "Spectrum"}};

template <std::size_t n>
std::string_view find(const word_for (&words)[n], std::string_view key, std::string_view otherwise) {
    for (const word_for& w : words)
        if (w.key == key) return w.word;
    return otherwise;
}

std::string one_line(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char ch) { return ch == '\n' || ch == '\r'; }, ' ');
    return text;
}

std::string without_blanks(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](char ch) { return static_cast<unsigned char>(ch) <= ' '; }, '_');
    return name.empty() ? "_" : name;
}

}  // namespace

namespace {

// A variable of the file: a column, and that of its imaginary part or -1.
struct raw_variable {
    std::string name;
    std::size_t column;
    int imaginary;
    double times;
};

std::vector<raw_variable> raw_variables(const export_choice& c, bool is_complex) {
    std::vector<raw_variable> all;
    for (std::size_t i = 0; i < c.columns.size(); ++i) {
        const record_column& column = c.table.columns[c.columns[i]];
        raw_variable v{column.name, c.columns[i], -1, 1};
        if (is_complex && i == 0 && column.unit == "rad/s") v.times = 0.5 / 3.14159265358979323846;
        if (is_complex && column.name.starts_with("real_of_") && i + 1 < c.columns.size())
            if (const std::string name = column.name.substr(8);
                c.table.columns[c.columns[i + 1]].name == "imag_of_" + name) {
                v.name = name;
                v.imaginary = static_cast<int>(c.columns[++i]);
            }
        all.push_back(std::move(v));
    }
    std::vector<std::string> names;
    for (const raw_variable& v : all) names.push_back(without_blanks(v.name));
    names = unique_names(names);
    for (std::size_t i = 0; i < all.size(); ++i) all[i].name = names[i];
    return all;
}

std::string type_of(const export_choice& c, const raw_variable& v) {
    if (v.times != 1) return "frequency";
    return std::string(find(variable_types, c.table.columns[v.column].unit, "notype"));
}

}  // namespace

void write_raw(const export_choice& c, output_file& out) {
    const bool is_complex = is_over_frequency(c.table);
    const std::vector<raw_variable> variables = raw_variables(c, is_complex);
    std::string text;
    char number[32];
    for (std::size_t k = c.first_curve; k < c.end_curve; ++k) {
        const std::size_t begin = c.table.first_row[k], end = c.table.first_row[k + 1];
        text = "Title: " + one_line(c.title.empty() ? c.table.path : c.title) + "\nDate: " + one_line(c.date) +
               "\nPlotname: " + std::string(find(plot_names, c.table.kind, "Rows"));
        if (has_curve_column(c)) text += ", curve " + std::to_string(k + 1);
        text += std::string("\nFlags: ") + (is_complex ? "complex" : "real") +
                "\nNo. Variables: " + std::to_string(variables.size()) +
                "\nNo. Points: " + std::to_string(end - begin) + "\nVariables:\n";
        for (std::size_t i = 0; i < variables.size(); ++i)
            text += "\t" + std::to_string(i) + "\t" + variables[i].name + "\t" + type_of(c, variables[i]) + "\n";
        text += c.binary ? "Binary:\n" : "Values:\n";
        out.write(text);
        for (std::size_t row = begin; row < end; ++row) {
            text.clear();
            if (!c.binary) text = std::to_string(row - begin);
            for (const raw_variable& v : variables) {
                const double x = v.times * c.table.at(row, v.column),
                             y = v.imaginary < 0 ? 0 : c.table.at(row, static_cast<std::size_t>(v.imaginary));
                if (c.binary) {
                    append_little_endian(text, x);
                    if (is_complex) append_little_endian(text, y);
                } else {
                    text += '\t';
                    text.append(number, put_number(number, x));
                    if (is_complex) text += ',';
                    if (is_complex) text.append(number, put_number(number, y));
                    text += '\n';
                }
            }
            out.write(text);
        }
        if (!c.binary && k + 1 < c.end_curve) out.write("\n");
    }
}

}  // namespace cli
