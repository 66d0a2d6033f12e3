// A program that uses an installed Cordel, as any application would.

#include <Cordel/Cordel.h>

#include <cstdio>

int main()
{
    using Cordel::String;
    String const line = String("Cordel %1 says: %2 + %3 = %4").Arg(Cordel::GetVersionString()).Arg(2).Arg(3).Arg(2 + 3);
    std::puts(line.c_str());
    bool ok = false;
    int const answer = String(" 42 ").ToInt(&ok);
    return ok && answer == 42 ? 0 : 1;
}
