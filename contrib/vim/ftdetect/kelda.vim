" Files of the two folders of a device: where they are installed, or where "preinit" and "profiles"
" lie beside each other.

function! s:HasNeighbour(name) abort
  return isdirectory(expand('<afile>:p:h:h') . '/' . a:name)
endfunction

autocmd BufNewFile,BufRead */usr/lib*/preinit/* setfiletype kelda-preinit
autocmd BufNewFile,BufRead */KeldaMountProfiles/* setfiletype kelda-profile
autocmd BufNewFile,BufRead */preinit/*
      \ if s:HasNeighbour('profiles') | setfiletype kelda-preinit | endif
autocmd BufNewFile,BufRead */profiles/*
      \ if s:HasNeighbour('preinit') | setfiletype kelda-profile | endif
