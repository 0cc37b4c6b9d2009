// Marks a square and follows it: mark_square [HOST [PORT]].
#include <iostream>
#include <kelvo/kelvo.hpp>

int main(int count, char** arguments) try {
  const kelvo::Card card(count > 1 ? arguments[1] : "127.0.0.1",
                         count > 2 ? std::stoi(arguments[2]) : KELVO_DEFAULT_PORT);
  const auto progress = card.List().RegisterProgressCallback(
      [](int percent) { std::cout << "progress " << percent << " %" << std::endl; });
  const kelvo::List list(card);
  list.AppendMarkSpeed(0.01);  // field units per microsecond
  list.AppendJumpAbs2D(-10, -10);
  int percent = 0;
  for (const auto& [x, y] : {kelvo::Point2D{10, -10}, {10, 10}, {-10, 10}, {-10, -10}}) {
    list.AppendMarkAbs2D(x, y);
    list.AppendProgress(percent += 25);
  }
  card.List().Set(1, list);
  card.List().Execute(1);
  return card.List().WaitForListDone(std::chrono::seconds(10)) ? 0 : 1;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
