// The floor under every run of rbk: a process that links the same libraries and does nothing.
#include <pthread.h>

#include <iostream>

int main()
{
    return pthread_self() == 0 || !std::cout ? 1 : 0;
}
