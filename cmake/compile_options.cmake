# Sets warnings, hardening and sanitizers for every target.
add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow)

# A 32-bit glibc has a 32-bit time_t and cannot stat a large inode number without these.
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)

if(FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
else()
  add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE
    "$<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>")
endif()

add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
