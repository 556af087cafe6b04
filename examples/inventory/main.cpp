// A store that answers a query with many replies, which the requester uses as they come; the types are made from IDL.
//
//     inventory PREFIX

#include <exception>
#include <iostream>
#include <string>
#include <thread>
#include <vector>
#include <zemtra/zemtra.hpp>

#include "inventory.h"

namespace {

using namespace std::chrono_literals;
using inventory::Item;
using inventory::Query;

Item make_item(const char* name, int count, const std::vector<std::string>& shelves, bool last) {
  Item item;
  item.name(name);
  item.count(count);
  item.shelves(shelves);
  item.last(last);
  return item;
}

void serve_one_query(zemtra::Replier<Query, Item>& replier) {
  static const std::vector<Item> stock = {make_item("nail", 900, {"A1", "A2"}, false),
                                          make_item("needle", 12, {"C7"}, false),
                                          make_item("screw", 300, {"B1"}, false)};
  const auto query = replier.receive_request(10s);
  if (!query) { return; }
  for (const Item& item : stock) {
    const bool found = item.name().compare(0, query->data().name_prefix().size(), query->data().name_prefix()) == 0;
    if (found) { replier.send_reply(item, *query); }
  }
  replier.send_reply(make_item("", 0, {}, true), *query);
}

}  // namespace

int main(int argc, char** argv) {
  const zemtra::Participant participant;
  zemtra::Replier<Query, Item> replier(participant, "Inventory");
  zemtra::Requester<Query, Item> requester(participant, "Inventory");
  std::thread store([&replier] { serve_one_query(replier); });

  Query query;
  query.name_prefix(argc > 1 ? argv[1] : "");
  int found = 0;
  for (const auto& reply : requester.send(query, 10s)) {
    const Item& item = reply.data();
    if (item.last()) { break; }
    std::cout << item.name() << ": " << item.count() << " on";
    for (const std::string& shelf : item.shelves()) { std::cout << ' ' << shelf; }
    std::cout << '\n';
    ++found;
  }
  store.join();
  return found > 0 ? 0 : 1;
}
