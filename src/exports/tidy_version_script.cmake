# Puts one exported name a line into the preprocessed version script.
file(READ ${IN} text)
string(REGEX REPLACE "[ \t\r\n]+" " " text "${text}")
string(STRIP "${text}" text)
string(REPLACE "; " ";\n  " text "${text}")
string(REPLACE "global: " "global:\n  " text "${text}")
string(REPLACE "{ " "{\n" text "${text}")
string(REPLACE "  local: *;\n  };" "local: *;\n};" text "${text}")
file(WRITE ${OUT} "${text}\n")
