# Times behind 2038, inode numbers and sizes of more than 32 bits on 32-bit devices, too: stat(2) fails on a file that has
# one otherwise, and a household's settings would count as missing. For everything that is compiled here; 64-bit machines
# know only the wide types.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()
