// The sample application: a red-button banner; RED opens a menu once the page has asked for
// the colour keys, the arrows move the selection, ENTER launches an entry, BACK hides.

var VK_RED = 403, VK_UP = 38, VK_DOWN = 40, VK_ENTER = 13, VK_BACK = 461;
var KEYSET_RED = 0x1, KEYSET_NAVIGATION = 0x10;

var app = null;
var items = [];
var selected = 0;
var menuOpen = false;

function element(id) {
    return document.getElementById(id);
}

function ownerApplication() {
    var manager = element('appmgr');
    try {
        return manager && manager.getOwnerApplication ? manager.getOwnerApplication(document) : null;
    } catch (e) {
        return null;
    }
}

function loadMenu(done) {
    var request = new XMLHttpRequest();
    request.onreadystatechange = function () {
        if (request.readyState !== 4)
            return;
        var lines = (request.responseText || '').split('\n');
        for (var i = 0; i < lines.length; ++i) {
            if (!lines[i])
                continue;
            var parts = lines[i].split('|');
            items.push({ title: parts[0], target: parts[1] || null });
        }
        done();
    };
    request.open('GET', 'data/menu.txt', true);
    request.send(null);
}

function drawMenu() {
    var list = element('menu');
    var html = '';
    for (var i = 0; i < items.length; ++i)
        html += '<li' + (i === selected ? ' class="selected"' : '') + '>' + items[i].title + '</li>';
    list.innerHTML = html;
}

function showMenu(open) {
    menuOpen = open;
    element('menu').className = open ? 'menu' : 'menu hidden';
    element('banner').className = open ? 'banner hidden' : 'banner';
    if (open)
        drawMenu();
}

function launch(item) {
    if (!item.target || !app)
        return;
    try {
        app.createApplication(item.target, false);
    } catch (e) {
        // the entry is not signalled any more: the menu stays
    }
}

function onKey(event) {
    var code = event.keyCode;
    if (!menuOpen && code === VK_RED) {
        showMenu(true);
    } else if (menuOpen && code === VK_UP) {
        selected = (selected + items.length - 1) % items.length;
        drawMenu();
    } else if (menuOpen && code === VK_DOWN) {
        selected = (selected + 1) % items.length;
        drawMenu();
    } else if (menuOpen && code === VK_ENTER) {
        launch(items[selected]);
    } else if (menuOpen && code === VK_BACK) {
        showMenu(false);
    } else {
        return;
    }
    event.preventDefault();
}

function start() {
    app = ownerApplication();
    if (app) {
        try {
            app.privateData.keyset.setValue(KEYSET_RED | KEYSET_NAVIGATION);
            app.show();
        } catch (e) {
            // a page outside an HbbTV browser still draws its banner
        }
    }
    document.addEventListener('keydown', onKey, false);
    element('origin').textContent = location.protocol === 'dvb:' ? 'Served from the object carousel.'
                                                                 : 'Served over broadband.';
    loadMenu(drawMenu);
}
