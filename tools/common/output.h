// Standard output, and what a program says when it fails.
#pragma once

#include <exception>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string_view>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace tools {

/// Standard output does not take what is written, because the disk is full, say. The text says why.
class WriteError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Writes to standard output. Throws WriteError.
void write_output(std::string_view text);
/// Hands over what standard output still holds. Throws WriteError.
void flush_output();

/// Standard output as a stream whose failures are WriteErrors.
class OutputStream final : public std::ostream {
  public:
    OutputStream();

  private:
    class Buffer final : public std::streambuf {
        int_type overflow(int_type character) override;
        std::streamsize xsputn(const char* text, std::streamsize size) override;
        int sync() override;
    };
    Buffer buffer_;
};

/// Says on standard error why a program ends, after everything that it has written, and returns the exit
/// status.
int fail(const char* program, int status, const std::exception& error);

/// Prints what parsing a command line led to: help, the version, or on standard error a mistake. The exit
/// status, `mistake` for a mistake. Throws WriteError.
int show(const CLI::App& app, const CLI::ParseError& result, int mistake);

}  // namespace tools
