#pragma once

// Counts how often code of this program, the kits among it, asks for memory while it lives; what
// the libraries that it calls ask for by themselves does not count. One at a time.
class Allocations
{
public:
    Allocations();
    ~Allocations();
    Allocations(const Allocations &) = delete;
    Allocations &operator=(const Allocations &) = delete;

    long count() const;
};
