#include "tnl/plot/plot_convert.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tnl/common/exit_status.h"

namespace cli {

namespace {

constexpr const char* program = "rsvg-convert";

using scratch = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;  // a file without name

scratch open_scratch() {
    scratch file(std::tmpfile(), std::fclose);
    if (!file) throw file_error(std::string("cannot make a temporary file: ") + std::strerror(errno));
    fcntl(fileno(file.get()), F_SETFD, FD_CLOEXEC);
    return file;
}

std::string text_of(std::FILE* file) {
    std::string text;
    std::rewind(file);
    char buffer[1 << 16];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;) text.append(buffer, n);
    return text;
}

}  // namespace

std::string convert_svg(std::string_view svg, picture_format format) {
    if (format == picture_format::svg) return std::string(svg);
    const scratch in = open_scratch(), out = open_scratch(), messages = open_scratch();
    if (std::fwrite(svg.data(), 1, svg.size(), in.get()) != svg.size() || std::fflush(in.get()) != 0)
        throw file_error(std::string("cannot write a temporary file: ") + std::strerror(errno));
    std::rewind(in.get());

    const bool png = format == picture_format::png;
    const pid_t child = fork();
    if (child < 0) throw file_error(std::string("cannot start ") + program + ": " + std::strerror(errno));
    if (child == 0) {
        dup2(fileno(in.get()), STDIN_FILENO);
        dup2(fileno(out.get()), STDOUT_FILENO);
        dup2(fileno(messages.get()), STDERR_FILENO);
        setenv("SOURCE_DATE_EPOCH", "0", 1);
        execlp(program, program, "-f", png ? "png" : "pdf", "-z", png ? "2" : "1", static_cast<char*>(nullptr));
        _exit(errno == ENOENT ? 127 : 126);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR) throw file_error(std::string("lost ") + program + ": " + std::strerror(errno));
    if (WIFEXITED(status) && WEXITSTATUS(status) == 127)
        throw file_error(std::string(png ? "a PNG" : "a PDF") + " picture needs " + program +
                         " (Debian package librsvg2-bin)");
    std::string picture = text_of(out.get());
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || picture.empty()) {
        std::string why = text_of(messages.get());
        while (!why.empty() && why.back() == '\n') why.pop_back();
        throw file_error(std::string(program) + " failed" + (why.empty() ? "" : ": " + why));
    }
    return picture;
}

}  // namespace cli
