// A program that does nothing: the lower limit of any time from start to exit.
int main() { return 0; }
