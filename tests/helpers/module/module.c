#include <stdio.h>
#include <stdlib.h>

/* Each load and unload appends one letter to the log, so a test sees exactly how often the
   loader really opened and closed the library. */
static void note(char const* letter)
{
    char const* log = getenv("CORDEL_TEST_MODULE_LOG");
    FILE* f = log ? fopen(log, "a") : NULL;
    if (!f)
        return;
    fputs(letter, f);
    fclose(f);
}

__attribute__((constructor)) static void loaded(void)
{
    note("L");
}

__attribute__((destructor)) static void unloaded(void)
{
    note("U");
}

int cordel_test_add(int a, int b)
{
    return a + b;
}

char const* cordel_test_name(void)
{
    return "test module";
}
