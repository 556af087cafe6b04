#pragma once

#include <inventory.h>

/// An item whose members all have something in them.
inline inventory::Item rich_item() {
  inventory::Item item;
  item.name("base");
  item.id(7);
  item.part("part");
  item.flag(true);
  item.character('c');
  item.wide(L'w');
  item.number(0xFF);
  item.signed8(-8);
  item.unsigned8(8);
  item.number16(-16);
  item.unsigned16(16);
  item.number32(-32);
  item.unsigned32(32);
  item.number64(-64);
  item.unsigned64(64);
  item.real(-1.5F);
  item.large(0.1);
  item.text("text");
  item.wide_text(L"wide");
  item.label("code");
  item.paint(inventory::BLUE);
  item.marks(static_cast<inventory::Flags>(inventory::fragile | inventory::heavy));
  item.halves().low(5);
  item.colours({inventory::RED, inventory::BLUE});
  item.booleans({true, false, true});
  item.octets({1, 2, 3});
  item.wides({L'a', L'b'});
  item.texts({"", "one"});
  item.wide_texts({L"", L"one"});
  item.codes({"one", "two"});
  item.path().resize(2);
  item.path()[1].y(0.25);
  item.table({{"a", "b"}, {}, {""}});
  item.truths({{true}, {}});
  item.amounts({1, -2});
  item.triple({1, 2, 3});
  item.pair({true, false});
  item.grid()[1][0].x(3);
  item.palette({inventory::GREEN, inventory::BLUE});
  item.lists()[1] = {1, 2};
  item.names({{1, "one"}, {2, "two"}});
  item.places()["here"].x(1);
  item.listed()["list"] = {1, 2, 3};
  item.chosen().text("chosen");
  item.colour_choice().colours({inventory::GREEN});
  item.choices().resize(2);
  item.choices()[1].number(5);
  return item;
}
