/* The baseline for a CGI program behind a web server: a static program that sends a stored answer.
   ANSWER_FILE is the path of an answer of the program, headers included. */
#include <fcntl.h>
#include <unistd.h>

int main(void)
{
    static char answer[1 << 20];
    int const file = open(ANSWER_FILE, O_RDONLY | O_CLOEXEC);
    ssize_t const size = read(file, answer, sizeof answer);
    return size > 0 && write(STDOUT_FILENO, answer, (size_t)size) == size ? 0 : 1;
}
