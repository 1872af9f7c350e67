// Writes the page of devices that come as JSON Lines on standard input: make_page fleet|comparison FILE. For
// the tests in the browser, which make up more devices than anybody would rehearse.

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "lab/page/page.h"
#include "lab/page/page_file.h"

int main(int argument_count, char* arguments[]) {
  try {
    if (argument_count != 3) throw std::invalid_argument("make_page fleet|comparison FILE");
    using lab::page::Kind;
    lab::page::Page page(arguments[1] == std::string("fleet") ? Kind::Fleet : Kind::Comparison);
    for (std::string line; std::getline(std::cin, line);) page.Add(line);
    lab::page::WritePageFile(arguments[2], page.Html());
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "make_page: " << error.what() << '\n';
    return 1;
  }
}
