// The menu bar: titles across the top strip, and for an open menu one column
// per level, each opened from an item of the one before.
#include "host/live/menu_bar.h"

#include <algorithm>
#include <vector>

#include "host/config.h"
#include "host/menus.h"
#include "host/render/render.h"

namespace toka_host {

namespace {

constexpr int kRowHeight = 16, kCharWidth = 6, kTitleGap = 2;  // characters between titles
const float kWhite[3] = {1, 1, 1}, kGrey[3] = {0.55f, 0.55f, 0.55f};

// The open menus, as the names from the bar: {"Plugins", "Hello"} shows the
// Plugins menu and, beside it, Hello's.
std::vector<std::string> gOpen;

struct Box {
  int left, bottom, right, top;
  bool Holds(int x, int y) const { return x >= left && x < right && y >= bottom && y < top; }
};

struct Column {
  std::string path;  // the menu's path of names
  std::vector<ShownMenuItem> items;
  Box box;
  Box Row(size_t i) const {
    return {box.left, box.top - kRowHeight * (int)(i + 1), box.right, box.top - kRowHeight * (int)i};
  }
};

int Top() { return gConfig.screenHeight; }
bool Shown() { return !gOpen.empty() || gMouseY >= Top() - kMenuBarHeight; }

std::vector<std::pair<std::string, Box>> Titles() {
  std::vector<std::pair<std::string, Box>> titles;
  int left = kCharWidth;
  for (const ShownMenuItem& item : MenuItemsAt("")) {
    int width = (int)(item.name.size() + kTitleGap) * kCharWidth;
    titles.push_back({item.name, {left, Top() - kMenuBarHeight, left + width, Top()}});
    left += width;
  }
  return titles;
}

// The open columns: the first below its title, each next one beside the
// row that opened it.
std::vector<Column> Columns() {
  std::vector<Column> columns;
  std::vector<std::pair<std::string, Box>> titles = Titles();
  std::string path;
  for (size_t level = 0; level < gOpen.size(); ++level) {
    path += (level ? "/" : "") + gOpen[level];
    Column column{path, MenuItemsAt(path), {}};
    size_t widest = 0;
    for (const ShownMenuItem& item : column.items) widest = std::max(widest, item.name.size());
    int width = (int)(widest + 4) * kCharWidth, top = Top() - kMenuBarHeight, left = 0;
    if (level == 0) {
      for (const auto& title : titles)
        if (title.first == gOpen[0]) left = title.second.left;
    } else {
      const Column& parent = columns.back();
      left = parent.box.right;
      for (size_t i = 0; i < parent.items.size(); ++i)
        if (parent.items[i].name == gOpen[level]) top = parent.Row(i).top;
    }
    column.box = {left, top - kRowHeight * (int)column.items.size(), left + width, top};
    columns.push_back(column);
  }
  return columns;
}

void DrawColumn(const Column& column) {
  DrawDarkBox(column.box.left, column.box.bottom, column.box.right, column.box.top);
  for (size_t i = 0; i < column.items.size(); ++i) {
    const ShownMenuItem& item = column.items[i];
    Box row = column.Row(i);
    int characters = (column.box.right - column.box.left) / kCharWidth - 1;
    std::string text = item.separator ? std::string(characters, '-')
                                      : (item.checked == 1 ? "* " : "  ") + item.name +
                                            (item.opensMenu ? " >" : "");
    DrawText(item.enabled ? kWhite : kGrey, row.left + kCharWidth / 2, row.bottom + 4, text, 0, 0);
  }
}

}  // namespace

void ResetMenuBar() { gOpen.clear(); }

void DrawMenuBar() {
  if (!Shown()) return;
  PrepareDrawingCode(19);  // screen coordinates, whatever the plugins left
  DrawDarkBox(0, Top() - kMenuBarHeight, gConfig.screenWidth, Top());
  for (const auto& title : Titles())
    DrawText(kWhite, title.second.left + kCharWidth, Top() - kMenuBarHeight + 6, title.first, 0, 0);
  for (const Column& column : Columns()) DrawColumn(column);
}

bool MenuBarPress(int x, int y, std::string& picked) {
  picked.clear();
  std::vector<Column> columns = Columns();
  for (size_t level = 0; level < columns.size(); ++level)
    for (size_t i = 0; i < columns[level].items.size(); ++i) {
      const ShownMenuItem& item = columns[level].items[i];
      if (!columns[level].Row(i).Holds(x, y)) continue;
      if (item.separator || !item.enabled) return true;  // nothing to pick there
      if (item.opensMenu) {
        gOpen.resize(level + 1);
        gOpen.push_back(item.name);
      } else {
        picked = columns[level].path + "/" + item.name;
        gOpen.clear();
      }
      return true;
    }
  // The strip is the bar's whether it showed yet or not: the pointer went
  // there to press.
  if (y >= Top() - kMenuBarHeight) {
    std::string title;
    for (const auto& candidate : Titles())
      if (candidate.second.Holds(x, y)) title = candidate.first;
    bool same = !gOpen.empty() && gOpen[0] == title;
    gOpen.clear();
    if (!title.empty() && !same) gOpen.push_back(title);
    return true;
  }
  bool wasOpen = !gOpen.empty();
  gOpen.clear();
  return wasOpen;
}

}  // namespace toka_host
