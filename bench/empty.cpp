// What a program costs that links the libraries and does nothing: the loader's work.
int main() {}
