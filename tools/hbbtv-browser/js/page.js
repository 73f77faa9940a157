// The TV measures from the AIT to the first frame that holds the page.
(function (tv) {
    'use strict';
    window.addEventListener('load', function () {
        requestAnimationFrame(function () { setTimeout(function () { tv.call('Page.painted'); }, 0); });
    });
})
