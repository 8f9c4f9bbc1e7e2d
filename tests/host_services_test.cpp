// The reference host's services, called through the table it hands to the
// library: navigation and FMS, the screen and its font, menus, commands,
// objects, and the system services.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>

#include "harness/picture.h"
#include "harness/temp_tree.h"
#include "host/commands.h"
#include "host/config.h"
#include "host/library.h"
#include "host/menus.h"
#include "host/output.h"
#include "host/render/gl.h"
#include "host/render/render.h"
#include "host/run.h"
#include "host/services.h"
#include "host/system.h"
#include "host/world/aircraft.h"
#include "host/world/navigation.h"
#include "host/world/world.h"

using namespace toka_host;
using toka_test::TempTree;

namespace {

class ServiceGroups : public ::testing::Test {
protected:
  TempTree tree;
  std::string output;
  TOKAHostServices* services = nullptr;

  void SetUp() override {
    HostConfig config;
    config.root = tree.root();
    config.screenWidth = 320;
    config.screenHeight = 240;
    ResetWorld(config);
    SetOutputCapture(&output);
    services = HostServices();
  }
  void TearDown() override {
    SetOutputCapture(nullptr);
    gLibrary = HostLibrary();
  }
  // Only the tests that look at pixels pay for a GL context: under an
  // emulator a context's first frame costs seconds.
  void Draw() {
    std::string error;
    ASSERT_TRUE(OpenRenderer(gConfig.screenWidth, gConfig.screenHeight, error)) << error;
    CreateHostTextures();
    ResetScreen();
  }
};

struct Info {
  TOKANavRef ref;
  int type, frequency;
  float latitude, longitude;
  std::string id, name;
};

Info InfoOf(TOKAHostServices* services, TOKANavRef ref) {
  Info info{ref, 0, 0, 0, 0, "", ""};
  char id[32], name[256], region;
  float height, heading;
  EXPECT_EQ(1, services->GetNavAidInfo(ref, &info.type, &info.latitude, &info.longitude, &height,
                                       &info.frequency, &heading, id, name, &region));
  info.id = id;
  info.name = name;
  return info;
}

double Haversine(double lat1, double lon1, double lat2, double lon2) {
  const double k = 3.14159265358979323846 / 180;
  double a = std::pow(std::sin((lat2 - lat1) * k / 2), 2) +
             std::cos(lat1 * k) * std::cos(lat2 * k) * std::pow(std::sin((lon2 - lon1) * k / 2), 2);
  return 2 * 6371008.8 * std::asin(std::sqrt(a));
}

std::string Upper(std::string text) {
  for (char& c : text) c = (char)std::toupper((unsigned char)c);
  return text;
}

TEST_F(ServiceGroups, NavaidsAreFoundByTypeNameIdFrequencyAndPosition) {
  std::vector<Info> all;
  for (TOKANavRef ref = services->GetFirstNavAid(); ref != -1; ref = services->GetNextNavAid(ref))
    all.push_back(InfoOf(services, ref));
  ASSERT_GE(all.size(), 15u);

  // Each type is one run, bracketed by its first and last navaid.
  for (const Info& info : all) {
    TOKANavRef first = services->FindFirstNavAidOfType(info.type);
    TOKANavRef last = services->FindLastNavAidOfType(info.type);
    for (const Info& other : all)
      EXPECT_EQ(other.type == info.type, other.ref >= first && other.ref <= last) << other.id;
  }
  for (int i = 0; i < AirportCount(); ++i) {
    TOKANavRef ref = services->FindNavAid(nullptr, AirportAt(i).id, nullptr, nullptr, nullptr, kNavAirport);
    ASSERT_NE(-1, ref);
    EXPECT_EQ(AirportAt(i).name, all[ref].name);
  }
  // Every navaid is found again from its own position by its ID, and by its
  // frequency when it has one.
  for (const Info& info : all) {
    float lat = info.latitude, lon = info.longitude;
    int frequency = info.frequency;
    EXPECT_EQ(info.ref, services->FindNavAid(nullptr, info.id.c_str(), &lat, &lon, nullptr, info.type));
    if (frequency) {
      EXPECT_EQ(info.ref, services->FindNavAid(nullptr, nullptr, &lat, &lon, &frequency, info.type));
    }
  }
  // A name fragment in any case finds the first navaid whose name holds it.
  std::string fragment = all.back().name.substr(1, 4);
  for (char& c : fragment) c = (char)std::tolower((unsigned char)c);
  auto expected = std::find_if(all.begin(), all.end(), [&](const Info& info) {
    return Upper(info.name).find(Upper(fragment)) != std::string::npos;
  });
  EXPECT_EQ(expected->ref, services->FindNavAid(fragment.c_str(), nullptr, nullptr, nullptr, nullptr, 0));

  // Nearest of several types to a point, against a search of our own.
  float lat = 47.62f, lon = -122.41f;
  const Info* nearest = nullptr;
  for (const Info& info : all)
    if ((info.type & (kNavVOR | kNavNDB)) &&
        (!nearest || Haversine(lat, lon, info.latitude, info.longitude) <
                         Haversine(lat, lon, nearest->latitude, nearest->longitude)))
      nearest = &info;
  ASSERT_TRUE(nearest);
  EXPECT_EQ(nearest->ref, services->FindNavAid(nullptr, nullptr, &lat, &lon, nullptr, kNavVOR | kNavNDB));

  EXPECT_EQ(services->FindFirstNavAidOfType(kNavFix),
            services->FindNavAid(nullptr, nullptr, nullptr, nullptr, nullptr, kNavFix));
  EXPECT_EQ(-1, services->FindNavAid("no such place", nullptr, nullptr, nullptr, nullptr, 0));
  EXPECT_EQ(-1, services->GetNextNavAid(all.back().ref));
  char id[32] = "stale";
  EXPECT_EQ(0, services->GetNavAidInfo((TOKANavRef)all.size(), nullptr, nullptr, nullptr, nullptr,
                                       nullptr, nullptr, id, nullptr, nullptr));
  EXPECT_STREQ("", id);
}

TEST_F(ServiceGroups, FmsHoldsAHundredEntriesAndTheGpsFliesToTheDestination) {
  EXPECT_EQ(0, services->CountFMSEntries());
  TOKANavRef vor = services->FindFirstNavAidOfType(kNavVOR);
  Info navaid = InfoOf(services, vor);
  EXPECT_EQ(1, services->SetFMSEntryInfo(0, vor, 5000));
  EXPECT_EQ(1, services->SetFMSEntryLatLon(4, 47.5f, -122.25f, 3000));
  EXPECT_EQ(5, services->CountFMSEntries());

  int type, altitude;
  char id[32];
  TOKANavRef ref;
  float lat, lon;
  ASSERT_EQ(1, services->GetFMSEntryInfo(0, &type, id, &ref, &altitude, &lat, &lon));
  EXPECT_EQ(navaid.type, type);
  EXPECT_EQ(navaid.id, id);
  EXPECT_EQ(vor, ref);
  EXPECT_EQ(5000, altitude);
  EXPECT_EQ(navaid.latitude, lat);
  EXPECT_EQ(navaid.longitude, lon);
  ASSERT_EQ(1, services->GetFMSEntryInfo(2, &type, id, &ref, &altitude, &lat, &lon));
  EXPECT_EQ(0, type);
  EXPECT_EQ(-1, ref);
  ASSERT_EQ(1, services->GetFMSEntryInfo(4, &type, id, &ref, &altitude, &lat, &lon));
  EXPECT_EQ(kNavLatLon, type);
  EXPECT_EQ(47.5f, lat);
  EXPECT_EQ(-122.25f, lon);

  EXPECT_EQ(1, services->SetDestinationFMSEntry(0));
  EXPECT_EQ(navaid.type, services->GetGPSDestinationType());
  EXPECT_EQ(vor, services->GetGPSDestination());
  EXPECT_EQ(1, services->SetDestinationFMSEntry(4));
  EXPECT_EQ(kNavLatLon, services->GetGPSDestinationType());
  EXPECT_EQ(-1, services->GetGPSDestination());
  EXPECT_EQ(1, services->ClearFMSEntry(4));
  EXPECT_EQ(1, services->CountFMSEntries());

  // The last entry is 99.
  EXPECT_EQ(1, services->SetFMSEntryLatLon(99, 1, 2, 3));
  EXPECT_EQ(100, services->CountFMSEntries());
  EXPECT_EQ(0, services->SetFMSEntryLatLon(100, 1, 2, 3));
  EXPECT_EQ(1, services->SetDisplayedFMSEntry(99));
  EXPECT_EQ(0, services->SetDisplayedFMSEntry(100));
  EXPECT_EQ(99, services->GetDisplayedFMSEntry());
  EXPECT_EQ(0, services->GetFMSEntryInfo(-1, &type, id, &ref, &altitude, &lat, &lon));
  EXPECT_EQ(0, services->SetFMSEntryInfo(1, -1, 0));
  EXPECT_EQ(4, services->GetDestinationFMSEntry());
}

// The bounding box of the pixels of one colour.
struct Box {
  int left = 1 << 30, bottom = 1 << 30, right = -1, top = -1;
};
Box PixelsOf(uint32_t colour) {
  Box box;
  for (int y = 0; y < gConfig.screenHeight; ++y)
    for (int x = 0; x < gConfig.screenWidth; ++x)
      if (PixelAt(x, y) == colour) {
        box.left = std::min(box.left, x), box.right = std::max(box.right, x);
        box.bottom = std::min(box.bottom, y), box.top = std::max(box.top, y);
      }
  return box;
}

TEST_F(ServiceGroups, TextIsDrawnWithinTheMetricsTheFontReports) {
  Draw();
  float green[3] = {0, 1, 0};
  for (int font : {0, 1}) {
    int width, height, digitsOnly;
    services->GetFontDimensions(font, &width, &height, &digitsOnly);
    // The cells plugin authors are promised: 6 x 10 pixels, and twice that.
    EXPECT_EQ(font ? std::make_pair(12, 20) : std::make_pair(6, 10), std::make_pair(width, height));
    const char* text = "M_|gM";
    float measured = services->MeasureString(font, text, 5);
    EXPECT_EQ(measured, services->MeasureString(font, text, 50));  // stops at the end
    ClearScreen();
    services->DrawString(green, 40, 100, text, nullptr, font);
    Box box = PixelsOf(0x00FF00);
    EXPECT_EQ(40, box.left);
    EXPECT_LT(box.right, 40 + measured);
    EXPECT_GE(box.right, 40 + measured - width);  // the last character is in the last cell
    EXPECT_GE(box.bottom, 100);
    EXPECT_LT(box.top, 100 + height);

    // Wrapped at the width of five characters: the second word goes below.
    int wrap = (int)services->MeasureString(font, "AAAA ", 5);
    ClearScreen();
    services->DrawString(green, 40, 100, "AAAA AAAA", &wrap, font);
    box = PixelsOf(0x00FF00);
    EXPECT_LT(box.right, 40 + wrap);
    EXPECT_LT(box.bottom, 100);
    EXPECT_GE(box.bottom, 100 - height);
  }
  // Numbers look exactly like the text they stand for.
  auto drawn = [&](const std::function<void()>& draw) {
    ClearScreen();
    draw();
    return ReadScreen();
  };
  EXPECT_EQ(drawn([&] { services->DrawString(green, 5, 5, "-003.14", nullptr, 0); }),
            drawn([&] { services->DrawNumber(green, 5, 5, -3.14159, 3, 2, 0, 0); }));
  EXPECT_EQ(drawn([&] { services->DrawString(green, 5, 5, "+42", nullptr, 1); }),
            drawn([&] { services->DrawNumber(green, 5, 5, 42.2, 1, 0, 1, 1); }));
}

TEST_F(ServiceGroups, DarkBoxesDarkenTheirInsideAndMarkersShowWhereTheCameraLooks) {
  Draw();
  gGL.ClearColor(128 / 255.0f, 128 / 255.0f, 128 / 255.0f, 1);
  gGL.Clear(GL_COLOR_BUFFER_BIT);
  services->DrawTranslucentDarkBox(10, 50, 30, 20);
  for (auto inside : {std::make_pair(10, 20), std::make_pair(29, 49)}) {
    uint32_t pixel = PixelAt(inside.first, inside.second);
    EXPECT_LT(pixel & 0xFF, 0x80u);
    EXPECT_GT(pixel & 0xFF, 0u);  // translucent, not black
  }
  for (auto outside : {std::make_pair(30, 20), std::make_pair(10, 50), std::make_pair(9, 20)})
    EXPECT_EQ(0x808080u, PixelAt(outside.first, outside.second));

  // The chase camera looks along the user's heading, down at the aircraft.
  UpdateCamera();
  ClearScreen();
  const Aircraft& user = gAircraft[0];
  double x, y, z;
  services->WorldToLocal(user.latitude, user.longitude, user.elevation, &x, &y, &z);
  services->DrawAircraft(0, (float)x, (float)y, (float)z, 0, 0, 0, 1, nullptr);
  ASSERT_EQ(1u, gMarkers.size());
  EXPECT_TRUE(gMarkers[0].onScreen);
  EXPECT_NEAR(gConfig.screenWidth / 2, gMarkers[0].screenX, 1);
  EXPECT_LT(gMarkers[0].screenY, gConfig.screenHeight / 2);
  EXPECT_NE(0u, PixelAt(gMarkers[0].screenX, gMarkers[0].screenY));
  // Behind the camera: not drawn.
  services->DrawAircraft(1, 2 * gCamera[0] - (float)x, (float)y, 2 * gCamera[2] - (float)z, 0, 0, 0, 1, nullptr);
  EXPECT_FALSE(gMarkers[1].onScreen);

  int ids[3], more[2];
  services->GenerateTextureNumbers(ids, 3);
  services->GenerateTextureNumbers(more, 2);
  std::vector<int> all = {ids[0], ids[1], ids[2], more[0], more[1], services->GetTexture(0),
                          services->GetTexture(1)};
  std::sort(all.begin(), all.end());
  EXPECT_EQ(all.end(), std::adjacent_find(all.begin(), all.end()));
}

std::vector<int> gPicked;
int PluginsTakeEveryPick(int item) {
  gPicked.push_back(item);
  return 0;
}

TEST_F(ServiceGroups, MenusFormATreeThatIsShownAndPicked) {
  int plugins = services->CreateMenu(0, 0, "Plugins");
  services->AppendMenuItem(plugins, 0, "Hello", 1);
  int hello = services->CreateMenu(plugins, 0, "Hello");
  int sayHi = services->AppendMenuItem(hello, 0, "Say hi", 0);
  int separator = services->AppendMenuItem(hello, 1, "-", 0);
  int quiet = services->AppendMenuItem(hello, 2, "Quiet", 0);
  EXPECT_TRUE(sayHi != separator && separator != quiet && quiet != sayHi);
  services->SetMenuItemName(hello, 2, "Loud", 0);
  services->RemoveMenuItem(hello, 0);
  services->RemoveMenuItem(hello, 5);
  EXPECT_EQ(
      "Sim >\n  Pause\n  Reset flight\n  Quit\nView >\n  Default view\n"
      "Plugins >\n  Hello >\n    ----\n    Loud\n",
      MenuTreeText());

  // Picks: a plugin's item goes to the library by its host ID; the host's own
  // items, which the library does not take, run their command.
  gLibrary.MenuHook = PluginsTakeEveryPick;
  EXPECT_TRUE(PickMenuItem("Plugins/Hello/Loud"));
  EXPECT_FALSE(PickMenuItem("Plugins/Hello/Say hi"));
  EXPECT_FALSE(PickMenuItem("Plugins/Hello"));
  ASSERT_EQ(std::vector<int>{quiet}, gPicked);
  EXPECT_FALSE(gPaused);
  gLibrary.MenuHook = nullptr;
  EXPECT_TRUE(PickMenuItem("Sim/Pause"));
  EXPECT_TRUE(gPaused);

  services->DestroyMenu(hello);
  services->AppendMenuItem(plugins, 1, "Other", 0);
  EXPECT_NE(std::string::npos, MenuTreeText().find("Plugins >\n  Hello\n  Other\n"));
  services->DestroyMenu(plugins);
  EXPECT_EQ(std::string::npos, MenuTreeText().find("Plugins"));
}

std::vector<std::string> gCommandSteps;
bool gBeforeConsumes = false;
int RecordCommandPhase(TOKACommandRef, int isBegin, int isEnd, int isBefore) {
  gCommandSteps.push_back(std::string(isBefore ? "before " : "after ") +
                          (isEnd ? "end" : isBegin ? "begin" : "continue") +
                          (gPaused ? " paused" : " running"));
  return isBefore && gBeforeConsumes ? 0 : 1;
}

TEST_F(ServiceGroups, CommandsRunBeforeHandlersThenTheHostThenAfterHandlers) {
  TOKACommandRef pause = services->CreateCommand("sim/operation/pause_toggle", nullptr, 0);
  ASSERT_TRUE(pause);
  gLibrary.CommandHook = RecordCommandPhase;
  services->CommandBegin(pause);
  EXPECT_TRUE(IsCommandHeld(pause));
  services->CommandContinue(pause);
  services->CommandEnd(pause);
  EXPECT_FALSE(IsCommandHeld(pause));
  EXPECT_EQ((std::vector<std::string>{"before begin running", "after begin paused",
                                      "before continue paused", "after continue paused",
                                      "before end paused", "after end paused"}),
            gCommandSteps);
  // A before-handler that consumes the phase stops the host and the after-handlers.
  gCommandSteps.clear();
  gBeforeConsumes = true;
  RunCommandOnce(pause);
  EXPECT_TRUE(gPaused);
  EXPECT_EQ((std::vector<std::string>{"before begin paused", "before end paused"}), gCommandSteps);

  EXPECT_EQ(nullptr, services->CreateCommand("test/fire", "Fire.", 0));
  TOKACommandRef fire = services->CreateCommand("test/fire", "Fire.", 1);
  EXPECT_EQ(fire, services->CreateCommand("test/fire", nullptr, 0));
  EXPECT_EQ(fire, FindHostCommand("test/fire"));
  gCommandSteps.clear();
  int notACommand = 0;
  services->CommandBegin(&notACommand);
  EXPECT_TRUE(gCommandSteps.empty());
  EXPECT_EQ("[sim] paused\n", output);
}

void Collect(const char* path, void* refcon) { static_cast<std::vector<std::string>*>(refcon)->push_back(path); }

struct Completion {
  int calls = 0;
  TOKAObjectRef object = nullptr;
};
void Completed(TOKAObjectRef object, void* refcon) {
  auto* completion = static_cast<Completion*>(refcon);
  completion->calls++;
  completion->object = object;
}

TEST_F(ServiceGroups, ObjectsAreFilesBelowTheRootLoadedAtOnceOrByTheNextFrame) {
  std::string tower = tree.AddFile("Resources/objects/tower.obj");
  std::string hangar = tree.AddFile("Resources/objects/hangar.obj");
  std::string beacon = tree.AddFile("Resources/objects/lights/beacon.obj");
  std::string readme = tree.AddFile("Resources/objects/readme.txt");

  TOKAObjectRef object = services->LoadObject("Resources/objects/tower.obj");
  ASSERT_TRUE(object);
  EXPECT_EQ(object, services->LoadObject(tower.c_str()));
  EXPECT_EQ(nullptr, services->LoadObject("Resources/objects/missing.obj"));
  EXPECT_EQ(1, LoadedObjectCount());
  services->UnloadObject(object);
  EXPECT_EQ(1, LoadedObjectCount());  // still loaded once
  services->DrawObjectInstance(object, 0, 0, -50, 0, 0, 0, 1, 1);
  int notAnObject = 0;
  services->DrawObjectInstance(&notAnObject, 0, 0, -50, 0, 0, 0, 1, 1);
  ASSERT_EQ(1u, gMarkers.size());
  EXPECT_EQ('O', gMarkers[0].kind);
  services->UnloadObject(object);
  EXPECT_EQ(0, LoadedObjectCount());

  std::vector<std::string> found;
  EXPECT_EQ(2, services->LookupObjects("Resources/objects/*.obj", 0, 0, Collect, &found));
  EXPECT_EQ((std::vector<std::string>{hangar, tower}), found);
  found.clear();
  EXPECT_EQ(1, services->LookupObjects("Resources/objects/*/*.obj", 0, 0, Collect, &found));
  EXPECT_EQ(std::vector<std::string>{beacon}, found);
  EXPECT_EQ(1, services->LookupObjects((tree.root() + "Resources/*/readme.txt").c_str(), 0, 0, nullptr, nullptr));

  Completion loaded, missing;
  services->LoadObjectAsync("Resources/objects/hangar.obj", Completed, &loaded);
  services->LoadObjectAsync("Resources/objects/gone.obj", Completed, &missing);
  EXPECT_EQ(0, loaded.calls + missing.calls);
  CompletePendingObjectLoads();
  EXPECT_EQ(1, loaded.calls);
  EXPECT_EQ(1, missing.calls);
  EXPECT_EQ(nullptr, missing.object);
  EXPECT_EQ(loaded.object, services->LoadObject(hangar.c_str()));
  CompletePendingObjectLoads();
  EXPECT_EQ(1, loaded.calls);
}

TEST_F(ServiceGroups, SystemServicesAnswerFromTheRootAndPrintWhatTheUserWouldSee) {
  Draw();
  char path[512];
  services->GetSystemPath(path);
  EXPECT_EQ(tree.root(), path);
  services->GetPrefsPath(path);
  EXPECT_EQ(tree.root() + "Output/preferences/", path);
  struct stat info;
  EXPECT_EQ(0, stat(path, &info));

  services->SpeakString("Gear down");
  int buttons[] = {5, 7, 0};
  services->CommandButton(buttons, 0, 0);
  services->CommandButton(buttons, 0, 1);  // a repeat: recorded, not printed
  services->CommandButton(buttons, 1, 0);
  services->ShowUserMessage("Please place your new plugin in the plugins folder.",
                            "I will then reload all plugins.", "", "");
  services->DebugString("plain text");
  EXPECT_EQ(
      "[speech] Gear down\n[button] down 5 7\n[button] up 5 7\n"
      "[message] Please place your new plugin in the plugins folder.\n"
      "[message] I will then reload all plugins.\nplain text",
      output);
  ASSERT_EQ(4u, gRecordedInputs.size());
  EXPECT_EQ((std::vector<int>{0, 1, 5, 7}), gRecordedInputs[2].values);

  gFrame = 7;
  auto frameNumber = reinterpret_cast<int (*)()>(services->FindSymbol("HostFrameNumber"));
  ASSERT_TRUE(frameNumber);
  EXPECT_EQ(7, frameNumber());
  EXPECT_EQ(nullptr, services->FindSymbol("NoSuchFunction"));
  auto saveScreen = reinterpret_cast<int (*)(const char*)>(services->FindSymbol("HostSaveScreen"));
  std::string picture = tree.root() + "screen.png";
  ASSERT_EQ(1, saveScreen(picture.c_str()));
  toka_test::Picture image;
  ASSERT_TRUE(image.Read(picture));
  EXPECT_EQ(320, image.width);
  EXPECT_EQ(240, image.height);
  EXPECT_EQ(0, saveScreen((tree.root() + "no/such/folder/screen.png").c_str()));
}

}  // namespace
