// The least that a statically linked program costs: its start and its end.
int main() {}
