/* The baseline for starting a CGI program: a static program that only prints an answer. */
#include <stdio.h>

int main(void)
{
    puts("{\"success\":true}");
    return 0;
}
