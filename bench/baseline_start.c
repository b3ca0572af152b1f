/* What no program on this design can beat: a static program that starts and answers. */
#include <stdio.h>

int main(void)
{
    puts("{\"success\":true}");
    return 0;
}
