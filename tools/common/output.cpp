#include "tools/common/output.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <new>
#include <sstream>
#include <system_error>

#include "tools/common/text.h"

namespace tools {
namespace {

[[noreturn]] void throw_write_error() {
    throw WriteError("cannot write to standard output: " + std::generic_category().message(errno));
}

void print_error(const char* before, std::string_view text) {
    std::fprintf(stderr, "%s%s\n", before, printable(text).c_str());
}

}  // namespace

void write_output(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        throw_write_error();
}

void flush_output() {
    if (std::fflush(stdout) != 0)
        throw_write_error();
}

// A stream throws what its buffer has thrown when it is asked to throw for badbit.
OutputStream::OutputStream() : std::ostream(nullptr) {
    rdbuf(&buffer_);
    exceptions(badbit | failbit);
}

OutputStream::Buffer::int_type OutputStream::Buffer::overflow(int_type character) {
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        const char one = traits_type::to_char_type(character);
        write_output({&one, 1});
    }
    return traits_type::not_eof(character);
}

std::streamsize OutputStream::Buffer::xsputn(const char* text, std::streamsize size) {
    write_output({text, static_cast<std::size_t>(size)});
    return size;
}

int OutputStream::Buffer::sync() {
    flush_output();
    return 0;
}

int fail(const char* program, int status, const std::exception& error) {
    std::fflush(stdout);
    if (dynamic_cast<const std::bad_alloc*>(&error))
        std::fprintf(stderr, "%s: there is not enough memory\n", program);
    else
        print_error((std::string(program) + ": ").c_str(), error.what());
    return status;
}

int show(const CLI::App& app, const CLI::ParseError& result, int mistake) {
    std::ostringstream output;
    std::stringstream errors;
    const int status = app.exit(result, output, errors);
    write_output(output.str());
    flush_output();
    for (std::string line; std::getline(errors, line);)
        print_error("", line);
    return status == 0 ? 0 : mistake;
}

}  // namespace tools
