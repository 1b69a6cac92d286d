find_package(Qt5 5.15 REQUIRED COMPONENTS Core)
