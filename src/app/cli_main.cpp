// Placeholder until the command-line front end lands.
int main() {
  return 2;
}
