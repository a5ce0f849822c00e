#include "tests/support/run_program.h"

#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace test_support {
namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// A file without a name, which holds this text.
File file_with(const std::string& text) {
    File file(std::tmpfile());
    EXPECT_EQ(std::fwrite(text.data(), 1, text.size(), file.get()), text.size());
    std::rewind(file.get());
    return file;
}

std::string contents(const File& file) {
    std::string text;
    std::array<char, 4096> chunk;
    std::rewind(file.get());
    for (std::size_t size; (size = std::fread(chunk.data(), 1, chunk.size(), file.get())) > 0;)
        text.append(chunk.data(), size);
    return text;
}

}  // namespace

ProgramResult run_program(const std::string& program, const std::vector<std::string>& arguments,
                          const std::string& input) {
    const File in = file_with(input);
    const File out = file_with("");
    const File err = file_with("");
    const pid_t child = fork();
    if (child == 0) {
        dup2(fileno(in.get()), STDIN_FILENO);
        dup2(fileno(out.get()), STDOUT_FILENO);
        dup2(fileno(err.get()), STDERR_FILENO);
        become_program(program, arguments);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(out), contents(err)};
}

void become_program(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (auto& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    execv(pointers[0], pointers.data());
    constexpr int not_executable = 127;  // as shells report it
    _exit(not_executable);
}

}  // namespace test_support
