#include <iostream>

#include "app/PreferenceKeys.h"
#include "platform/property_list_file.h"

// Prints the table of preferences, with the values of the factory file that is given.
int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: preference_table FACTORYDEFAULTS.plist\n";
    return 2;
  }
  const auto list = platform::propertyListFromFile(argv[1]);
  const auto* factory = list ? list->as<platform::Dictionary>() : nullptr;
  if (factory == nullptr) {
    std::cerr << "preference_table: " << argv[1] << " is missing or no dictionary\n";
    return 1;
  }
  std::cout << lumo::preferenceTable(*factory);
  return std::cout.flush() ? 0 : 1;
}
