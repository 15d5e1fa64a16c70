// A module for tests: an entry point and, in a file of each target's own, a string table, but no messages.

extern "C"
{
    int Qn_Test_Next(int nNumber);
}

int Qn_Test_Next(int nNumber) { return nNumber + 1; }
